#include "tools/project/project_check.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string_view>

#include "core/integer.h"
#include "curve/field.h"
#include "curve/point.h"
#include "curve/sect163r2.h"
#include "project/project_key_record.h"
#include "tools/counted_text.h"
#include "tools/project/attribute_meaning.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_reading.h"

namespace {

const core::CurveDomain& curve() {
    return core::sect163r2.domain;
}

/// Bytes of an attribute whose value has this many bits, behind its own header.
std::uint32_t elementSize(std::uint64_t degree) {
    constexpr std::uint32_t headerSize = 8;
    return headerSize + 4 * static_cast<std::uint32_t>((degree + 31) / 32);
}

/// What the findings are made of.
struct Checked {
    const ProjectFile& project;
    ProjectKeyRecord key;
    std::vector<ProjectFinding>& findings;

    void find(const char* code, const std::string& text) {
        findings.push_back({.code = code, .attribute = std::nullopt, .text = text});
    }
    void find(const char* code, ProjectAttributeId id, const std::string& text) {
        findings.push_back({.code = code, .attribute = id, .text = text});
    }
};

/// A point of the key and where it comes from.
struct StoredPoint {
    std::string name;
    core::FieldElement& x;
    core::FieldElement& y;
    ProjectAttributeId xId;
    ProjectAttributeId yId;

    core::CurvePoint point() const { return {.x = &x, .y = &y}; }
};

void checkRepetition(Checked& checked, const std::vector<ProjectEntry>& entries) {
    std::map<ProjectAttributeId, std::uint32_t> counts;
    for (const ProjectEntry& entry : entries) {
        ++counts[entry.id];
    }
    for (const auto& [id, count] : counts) {
        if (count > 1) {
            checked.find("repeated-attribute", id,
                         namedAttribute(id) + " stands " + std::to_string(count) +
                             " times in the directory; only the first counts");
        }
    }
}

void checkPermissions(Checked& checked, const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || (status.st_mode & (S_IRWXG | S_IRWXO)) == 0) {
        return;
    }
    std::string mode;
    for (const unsigned shift : {9U, 6U, 3U, 0U}) {
        mode += static_cast<char>('0' + (status.st_mode >> shift & 7U));
    }
    checked.find("permissions",
                 "holds a private scalar and is open to others than its owner: mode " + mode);
}

/// Whether the attribute is an honest, reduced coordinate.
bool checkCoordinate(Checked& checked, ProjectAttributeId id, const core::FieldElement& e) {
    if (const auto refusal = coordinateRefusal(checked.project, id)) {
        checked.find("no-coordinate", id, refusal->text);
        return false;
    }
    const std::uint32_t size = checked.project.attributeSize(id);
    if (size != elementSize(e.degree)) {
        const bool isShort = size < elementSize(e.degree);
        checked.find(isShort ? "short-coordinate" : "dishonest-length", id,
                     namedAttribute(id) + " has " + counted(size, "byte") + " instead of " +
                         std::to_string(elementSize(e.degree)));
        if (isShort) {
            return false;
        }
    }
    constexpr std::size_t topWord = 2;
    if (e.words[topWord] >> (e.degree % 64) != 0) {
        checked.find("not-reduced", id,
                     namedAttribute(id) + " has bits at or above the degree of the field");
        return false;
    }
    return true;
}

/// out := a * b, reduced.
void multiply(const core::FieldElement& a, const core::FieldElement& b, core::FieldElement& out) {
    core::fieldMultiply(a, b, out);
    core::fieldReduce(out, curve().reductionPolynomial);
}

/// Whether y^2 + xy = x^3 + ax^2 + b, that is y(y + x) = x^2 (x + a) + b.
bool isOnCurve(const core::FieldElement& x, const core::FieldElement& y) {
    constexpr std::uint64_t capacity = 8 * core::fieldWordRoom;
    const core::FieldElement zero{.degree = curve().degree, .capacity = capacity};
    core::FieldElement sum = zero;
    core::FieldElement left = zero;
    core::FieldElement square = zero;
    core::FieldElement right = zero;
    core::fieldAdd(y, x, sum);
    multiply(y, sum, left);
    multiply(x, x, square);
    core::fieldAdd(x, curve().coefficientA, sum);
    multiply(square, sum, right);
    core::fieldAddTo(right, curve().coefficientB);
    return core::fieldCompare(left, right) == 0;
}

/// out := k * P.
void multiply(const core::FieldElement& k, const core::CurvePoint& P, core::CurvePoint& out) {
    const core::CurveCoefficients coefficients{curve().coefficientA, curve().coefficientB};
    core::pointMultiply(k, P, coefficients, out, curve().reductionPolynomial);
}

/// Whether (n - 1) * P = -P, for a point on the curve with an x other than zero. The product n * P
/// would tell nothing: `pointAdd` takes -P for P where x has a zero top word, and doubles.
bool isOfOrder(const core::CurvePoint& P) {
    core::FieldElement factor = curve().order;
    factor.words[0] -= 1;
    core::PointTemporary product(curve().degree);
    multiply(factor, P, *product);
    core::pointNegate(*product);
    return !core::pointIsInfinity(*product) && core::fieldCompare(*product->x, *P.x) == 0 &&
           core::fieldCompare(*product->y, *P.y) == 0;
}

/// Whether the point is on the curve and of order n.
bool checkPoint(Checked& checked, const StoredPoint& stored) {
    const bool xIsSound = checkCoordinate(checked, stored.xId, stored.x);
    if (!checkCoordinate(checked, stored.yId, stored.y) || !xIsSound) {
        return false;
    }
    if (core::fieldIsZero(stored.x) && core::fieldIsZero(stored.y)) {
        checked.find("infinity", "the " + stored.name +
                                     " is (0, 0), as infinity is written at times: no point of "
                                     "the curve");
        return false;
    }
    if (!isOnCurve(stored.x, stored.y)) {
        checked.find("off-curve", "the " + stored.name + " is not on the curve");
        return false;
    }
    if (core::fieldIsZero(stored.x)) {
        checked.find("x-zero", "the " + stored.name + " has x = 0: it is the point of order 2");
        return false;
    }
    if (!isOfOrder(stored.point())) {
        checked.find("wrong-order", "the " + stored.name + " is not of order n");
        return false;
    }
    return true;
}

/// Whether the sign bit of the stored scalar is set.
bool isMarkedNegative(const ProjectFile& project) {
    const std::vector<std::uint8_t> value = project.getBytes(privateScalarAttribute);
    constexpr std::size_t signByte = 3;
    return value.size() > signByte && (value[signByte] & 0x80U) != 0;
}

/// Whether the scalar, which is there, is from 1 to n - 1.
bool checkScalar(Checked& checked) {
    const ProjectAttributeId id = privateScalarAttribute;
    if (isMarkedNegative(checked.project)) {
        checked.find("negative-scalar", id,
                     namedAttribute(id) + " is marked as negative, which the program ignores");
    }
    if (const auto refusal = scalarRefusal(checked.project)) {
        checked.find("no-scalar", id, refusal->text);
        return false;
    }
    core::CoreInteger scalar = *checked.key.privateScalar;
    core::integerNormalise(scalar);
    const std::uint64_t bits = core::integerBitLength(scalar);
    if (statedBits(checked.project, id) != bits) {
        checked.find("dishonest-length", id,
                     namedAttribute(id) + " states " +
                         counted(statedBits(checked.project, id), "bit") + ", but has " +
                         std::to_string(bits));
    } else if (checked.project.attributeSize(id) != sizeof(std::uint32_t) + (bits + 7) / 8) {
        checked.find("dishonest-length", id,
                     namedAttribute(id) + " has " +
                         counted(checked.project.attributeSize(id), "byte") + " instead of " +
                         std::to_string(sizeof(std::uint32_t) + (bits + 7) / 8));
    }
    core::CoreInteger order{.capacity = core::integerLimbRoom};
    core::fieldToInteger(curve().order, order);
    if (scalar.lengthAndSign == 0) {
        checked.find("scalar-out-of-range", id, namedAttribute(id) + " is zero");
        return false;
    }
    if (core::integerCompare(scalar, order) >= 0) {
        checked.find("scalar-out-of-range", id, namedAttribute(id) + " is not below the order");
        return false;
    }
    return true;
}

/// Compares the public point with the product of scalar and base point, all of them sound.
void checkProduct(Checked& checked, const StoredPoint& base, const StoredPoint& publicPoint) {
    core::FieldElement scalar{.degree = curve().degree, .capacity = curve().order.capacity};
    core::CoreInteger value = *checked.key.privateScalar;
    core::integerNormalise(value);
    core::fieldFromInteger(value, scalar);
    core::PointTemporary product(curve().degree);
    multiply(scalar, base.point(), *product);
    if (core::fieldCompare(*product->x, publicPoint.x) != 0 ||
        core::fieldCompare(*product->y, publicPoint.y) != 0) {
        checked.find("key-mismatch",
                     "the public point is not the product of the private scalar and the base "
                     "point");
    }
}

}  // namespace

ProjectCheck checkProject(const std::string& path) {
    ProjectCheck check;
    const ProjectReading reading = readProject(path);
    if (reading.unreadable) {
        check.unjudged = reading.refusal->text;
        return check;
    }
    if (reading.refusal.has_value()) {
        check.findings.push_back(
            {.code = "container", .attribute = std::nullopt, .text = reading.refusal->text});
        return check;
    }
    Checked checked{.project = reading.project, .key = {}, .findings = check.findings};
    checked.key.loadFromAttributes(reading.project);
    check.verifiesOnly = reading.project.attributeSize(privateScalarAttribute) == 0;
    checkRepetition(checked, reading.entries);
    if (!check.verifiesOnly) {
        checkPermissions(checked, path);
    }
    const StoredPoint base{.name = "base point",
                           .x = checked.key.basePointX,
                           .y = checked.key.basePointY,
                           .xId = basePointXAttribute,
                           .yId = basePointYAttribute};
    const StoredPoint publicPoint{.name = "public point",
                                  .x = checked.key.publicPointX,
                                  .y = checked.key.publicPointY,
                                  .xId = publicPointXAttribute,
                                  .yId = publicPointYAttribute};
    const bool baseIsSound = checkPoint(checked, base);
    const bool publicPointIsSound = checkPoint(checked, publicPoint);
    const bool scalarIsSound = !check.verifiesOnly && checkScalar(checked);
    if (baseIsSound && publicPointIsSound && scalarIsSound) {
        checkProduct(checked, base, publicPoint);
    }
    return check;
}

std::optional<std::string> unsoundKey(const std::string& path) {
    constexpr std::array<std::string_view, 6> harmless = {"container",          "permissions",
                                                          "repeated-attribute", "dishonest-length",
                                                          "negative-scalar",    "no-scalar"};
    for (const ProjectFinding& finding : checkProject(path).findings) {
        if (std::find(harmless.begin(), harmless.end(), finding.code) == harmless.end()) {
            return finding.text;
        }
    }
    return std::nullopt;
}
