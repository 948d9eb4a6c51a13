#include "tools/project/new_project.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "core/integer.h"
#include "curve/field.h"
#include "curve/point.h"
#include "curve/random_scalar.h"
#include "frontend/hexadecimal_digit.h"
#include "project/project_key_record.h"
#include "tools/project/point_product.h"
#include "tools/project/stored_bytes.h"

namespace {

/// The stored form of a coordinate: its degree, four zero bytes, its bits in 32-bit words.
Bytes storedCoordinate(const core::FieldElement& e) {
    Bytes bytes;
    appendWord(bytes, e.degree);
    appendWord(bytes, 0);
    appendBytes(bytes, e.words.data(), storedCoordinateSize - bytes.size());
    return bytes;
}

/// The stored form of a scalar: its bit length and its bytes.
Bytes storedScalar(const core::FieldElement& k) {
    core::CoreInteger scalar{.capacity = core::integerLimbRoom};
    core::fieldToInteger(k, scalar);
    core::integerNormalise(scalar);
    Bytes bytes;
    appendWord(bytes, core::integerBitLength(scalar));
    appendBytes(bytes, core::integerLimbs(scalar), core::integerByteLength(scalar));
    return bytes;
}

core::FieldElement randomScalar() {
    const core::FieldTemporary k(core::fieldNew(projectCurve.degree));
    core::drawScalar(*k, projectCurve.order);
    return *k;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view whiteSpace = " \t\r\n";
    const std::size_t first = text.find_first_not_of(whiteSpace);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(whiteSpace) - first + 1);
}

bool isBelowOrder(const core::FieldElement& k) {
    const auto& order = projectCurve.order.words;
    return std::lexicographical_compare(k.words.rbegin(), k.words.rend(), order.rbegin(),
                                        order.rend());
}

}  // namespace

ProjectFile newProject(BasePoint base, const std::optional<core::FieldElement>& scalar) {
    core::PointTemporary basePoint(projectCurve.degree);
    core::PointTemporary publicPoint(projectCurve.degree);
    if (base == BasePoint::standard) {
        core::pointCopy(projectCurve.basePoint, *basePoint);
    } else {
        // The order is prime, so every multiple of the published base point but infinity has that
        // order.
        pointProduct(randomScalar(), projectCurve.basePoint, *basePoint);
    }
    const core::FieldElement k = scalar.has_value() ? *scalar : randomScalar();
    pointProduct(k, *basePoint, *publicPoint);

    ProjectFile project;
    project.insertAttribute(basePointXAttribute, storedCoordinate(*basePoint->x));
    project.insertAttribute(basePointYAttribute, storedCoordinate(*basePoint->y));
    project.insertAttribute(privateScalarAttribute, storedScalar(k));
    project.insertAttribute(publicPointXAttribute, storedCoordinate(*publicPoint->x));
    project.insertAttribute(publicPointYAttribute, storedCoordinate(*publicPoint->y));
    return project;
}

ProjectFile verifyingProject(const ProjectFile& project) {
    ProjectKeyRecord key;
    key.loadFromAttributes(project);
    ProjectFile copy;
    for (const auto& [id, coordinate] : {std::pair<ProjectAttributeId, const core::FieldElement&>{
                                             basePointXAttribute, key.basePointX},
                                         {basePointYAttribute, key.basePointY},
                                         {publicPointXAttribute, key.publicPointX},
                                         {publicPointYAttribute, key.publicPointY}}) {
        copy.insertAttribute(id, storedCoordinate(coordinate));
    }
    return copy;
}

ScalarReading readScalar(std::string_view text) {
    std::string_view digits = trimmed(text);
    if (digits.empty()) {
        return {.refusal = "holds no digits", .scalar = {}};
    }
    for (const char digit : digits) {
        if (!hexadecimalValue(digit).has_value()) {
            return {.refusal = "has a character that is not a hexadecimal digit", .scalar = {}};
        }
    }
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    if (digits.empty()) {
        return {.refusal = "the scalar is zero", .scalar = {}};
    }
    core::FieldElement scalar{.degree = projectCurve.order.degree,
                              .capacity = projectCurve.order.capacity};
    constexpr std::size_t digitsOfWord = 16;
    // Of more digits than there is room for, the first ones make too large a scalar already.
    digits = digits.substr(0, digitsOfWord * scalar.words.size());
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const std::uint64_t value = *hexadecimalValue(digits[digits.size() - 1 - i]);
        scalar.words[i / digitsOfWord] |= value << (i % digitsOfWord * 4);
    }
    if (!isBelowOrder(scalar)) {
        return {.refusal = "the scalar is not below the order", .scalar = {}};
    }
    return {.refusal = std::nullopt, .scalar = scalar};
}
