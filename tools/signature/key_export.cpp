#include "tools/signature/key_export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "core/integer.h"
#include "curve/field.h"
#include "curve/field_163.h"
#include "curve/sect163r2.h"
#include "project/project_key_record.h"
#include "tools/project/attribute_meaning.h"
#include "tools/project/key_reading.h"
#include "tools/signature/byte_string.h"
#include "tools/signature/der.h"
#include "tools/signature/pem.h"

namespace {

/// Bytes of a field element, and of a number up to the order.
constexpr std::size_t elementSize = 21;

/// RFC 5208, section 5.
constexpr std::uint32_t privateKeyInfoVersion = 0;

ProjectKeyRecord keyOf(const ProjectFile& project) {
    ProjectKeyRecord key;
    key.loadFromAttributes(project);
    return key;
}

const core::CurveDomain& curve() {
    return core::sect163r2.domain;
}

ByteString elementBytes(const core::FieldElement& e) {
    return bigEndianBytes(e.words, elementSize);
}

/// What stands against coordinates of the curve's degree.
std::optional<std::string> reductionRefusal(const ProjectKeyRecord& key) {
    const std::array<std::pair<ProjectAttributeId, const core::FieldElement&>, 4> coordinates{{
        {basePointXAttribute, key.basePointX},
        {basePointYAttribute, key.basePointY},
        {publicPointXAttribute, key.publicPointX},
        {publicPointYAttribute, key.publicPointY},
    }};
    for (const auto& [id, coordinate] : coordinates) {
        if (core::fieldDegree(coordinate) >= curve().degree) {
            return namedAttribute(id) + " has bits at or above the degree of the field";
        }
    }
    return std::nullopt;
}

/// What stands against a normal scalar.
std::optional<std::string> rangeRefusal(const core::CoreInteger& scalar) {
    if (core::integerIsZero(scalar)) {
        return namedAttribute(privateScalarAttribute) + " is zero";
    }
    core::CoreInteger order{.capacity = core::integerLimbRoom};
    core::fieldToInteger(curve().order, order);
    if (core::integerCompare(scalar, order) != -1) {
        return namedAttribute(privateScalarAttribute) + " is not below the order";
    }
    return std::nullopt;
}

// The parts of a key.

/// A point as SEC 1, section 2.3.3, has it without compression.
ByteString pointBytes(const core::FieldElement& x, const core::FieldElement& y) {
    constexpr std::uint8_t uncompressed = 0x04;
    ByteString bytes{uncompressed};
    for (const core::FieldElement* coordinate : {&x, &y}) {
        const ByteString more = elementBytes(*coordinate);
        bytes.insert(bytes.end(), more.begin(), more.end());
    }
    return bytes;
}

/// The exponents of the reduction polynomial z^163 + z^7 + z^6 + z^3 + 1 between 0 and the degree.
ByteString middleExponents() {
    static_assert(core::lowTerms163 == (1 << 7 | 1 << 6 | 1 << 3 | 1));
    return derSequence({derInteger(3), derInteger(6), derInteger(7)});
}

/// Characteristic-two of X9.62: the degree, and the pentanomial by its middle exponents.
ByteString fieldIdentifier() {
    const ByteString characteristicTwoField = derObjectIdentifier({1, 2, 840, 10045, 1, 2});
    const ByteString pentanomialBasis = derObjectIdentifier({1, 2, 840, 10045, 1, 2, 3, 3});
    return derSequence({characteristicTwoField,
                        derSequence({derInteger(static_cast<std::uint32_t>(curve().degree)),
                                     pentanomialBasis, middleExponents()})});
}

ByteString curveParameters(const ProjectKeyRecord& key) {
    constexpr std::uint32_t version = 1;
    return derSequence({derInteger(version), fieldIdentifier(),
                        derSequence({derOctetString(elementBytes(curve().coefficientA)),
                                     derOctetString(elementBytes(curve().coefficientB))}),
                        derOctetString(pointBytes(key.basePointX, key.basePointY)),
                        derInteger(elementBytes(curve().order)),
                        derInteger(elementBytes(curve().cofactor))});
}

ByteString algorithm(const ProjectKeyRecord& key) {
    const ByteString ecPublicKey = derObjectIdentifier({1, 2, 840, 10045, 2, 1});
    return derSequence({ecPublicKey, curveParameters(key)});
}

ByteString publicPoint(const ProjectKeyRecord& key) {
    return derBitString(pointBytes(key.publicPointX, key.publicPointY));
}

/// ECPrivateKey of RFC 5915, without the parameters that stand around it.
ByteString privateKey(const ProjectKeyRecord& key, const core::CoreInteger& scalar) {
    constexpr std::uint32_t version = 1;
    return derSequence({derInteger(version),
                        derOctetString(bigEndianBytes(scalar.limbs, elementSize)),
                        derContext(1, publicPoint(key))});
}

KeyExport exportOf(const std::string& label, ByteString der) {
    std::string pem = pemText(label, der);
    return {.der = std::move(der), .pem = std::move(pem)};
}

}  // namespace

KeyExport exportPublicKey(const ProjectFile& project) {
    if (auto refusal = verifyingRefusal(project)) {
        return {.refusal = std::move(refusal->text)};
    }
    const ProjectKeyRecord key = keyOf(project);
    if (auto refusal = reductionRefusal(key)) {
        return {.refusal = std::move(refusal)};
    }
    return exportOf("PUBLIC KEY", derSequence({algorithm(key), publicPoint(key)}));
}

KeyExport exportPrivateKey(const ProjectFile& project) {
    for (const auto& rule : {signingRefusal, verifyingRefusal}) {
        if (auto refusal = rule(project)) {
            return {.refusal = std::move(refusal->text)};
        }
    }
    const ProjectKeyRecord key = keyOf(project);
    if (auto refusal = reductionRefusal(key)) {
        return {.refusal = std::move(refusal)};
    }
    core::CoreInteger scalar = *key.privateScalar;
    core::integerNormalise(scalar);
    if (auto refusal = rangeRefusal(scalar)) {
        return {.refusal = std::move(refusal)};
    }
    return exportOf("PRIVATE KEY", derSequence({derInteger(privateKeyInfoVersion), algorithm(key),
                                                derOctetString(privateKey(key, scalar))}));
}
