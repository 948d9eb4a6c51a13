#include "tools/project/project_check.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "core/integer.h"
#include "curve/field.h"
#include "curve/point.h"
#include "engine/key_rules.h"
#include "project/project_key_record.h"
#include "tools/counted_text.h"
#include "tools/project/attribute_meaning.h"
#include "tools/project/key_reading.h"
#include "tools/project/point_product.h"
#include "tools/project/project_protection.h"
#include "tools/project/project_reading.h"
#include "tools/project/stored_bytes.h"
#include "tools/rules.h"

namespace {

using Findings = std::vector<ProjectFinding>;

/// Of more repeated attributes than this, the others are counted.
constexpr std::size_t mostRepeatedNamed = 100;

/// What the findings on a key are made of.
struct Checked {
    const ProjectFile& project;
    ProjectKeyRecord key{};
    Findings findings{};

    void find(Finding finding, KeyDamage damage, const std::string& text) {
        findings.push_back({.code = ruleOf(finding).code,
                            .attribute = std::nullopt,
                            .text = text,
                            .damage = damage});
    }
    void find(const Refusal& refusal, ProjectAttributeId id, KeyDamage damage) {
        findings.push_back(
            {.code = refusal.code, .attribute = id, .text = refusal.text, .damage = damage});
    }
    void find(Finding finding, ProjectAttributeId id, KeyDamage damage, const std::string& text) {
        findings.push_back(
            {.code = ruleOf(finding).code, .attribute = id, .text = text, .damage = damage});
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

void checkRepetition(const std::vector<ProjectEntry>& entries, Findings& findings) {
    std::vector<ProjectAttributeId> ids;
    std::transform(entries.begin(), entries.end(), std::back_inserter(ids),
                   [](const ProjectEntry& entry) { return entry.id; });
    std::sort(ids.begin(), ids.end());
    const char* code = ruleOf(Finding::repeatedAttribute).code;
    std::size_t repeated = 0;
    for (auto first = ids.begin(); first != ids.end();) {
        const ProjectAttributeId id = *first;
        const auto next = std::find_if(first, ids.end(), [id](auto other) { return other != id; });
        if (next - first > 1 && ++repeated <= mostRepeatedNamed) {
            findings.push_back({.code = code,
                                .attribute = id,
                                .text = namedAttribute(id) + " stands " +
                                        std::to_string(next - first) +
                                        " times in the directory; only the first counts"});
        }
        first = next;
    }
    if (repeated > mostRepeatedNamed) {
        findings.push_back({.code = code,
                            .attribute = std::nullopt,
                            .text = std::to_string(repeated) +
                                    " attributes in all stand more than once in the directory; "
                                    "the first " +
                                    std::to_string(mostRepeatedNamed) + " of them are named"});
    }
}

/// Whether the attribute is an honest, reduced coordinate.
bool checkCoordinate(Checked& checked, ProjectAttributeId id, const core::FieldElement& e) {
    if (const auto refusal = keyRefusal(coordinateFault(checked.key, id))) {
        checked.find(*refusal, id, KeyDamage::points);
        return false;
    }
    const std::uint32_t size = checked.project.attributeSize(id);
    const std::string sizes = namedAttribute(id) + " has " + counted(size, "byte") +
                              " instead of " + std::to_string(storedCoordinateSize);
    if (size < storedCoordinateSize) {
        checked.find(Finding::shortCoordinate, id, KeyDamage::points, sizes);
        return false;
    }
    if (size > storedCoordinateSize) {
        checked.find(Finding::dishonestLength, id, KeyDamage::none, sizes);
    }
    constexpr std::size_t topWord = 2;
    if (e.words[topWord] >> (e.degree % 64) != 0) {
        checked.find(Finding::notReduced, id, KeyDamage::points,
                     namedAttribute(id) + " has bits at or above the degree of the field");
        return false;
    }
    return true;
}

/// out := a * b, reduced.
void multiply(const core::FieldElement& a, const core::FieldElement& b, core::FieldElement& out) {
    core::fieldMultiply(a, b, out);
    core::fieldReduce(out, projectCurve.reductionPolynomial);
}

/// Whether y^2 + xy = x^3 + ax^2 + b, that is y(y + x) = x^2 (x + a) + b.
bool isOnCurve(const core::FieldElement& x, const core::FieldElement& y) {
    const core::FieldElement zero{.degree = projectCurve.degree,
                                  .capacity = sizeof core::FieldElement::words};
    core::FieldElement sum = zero;
    core::FieldElement left = zero;
    core::FieldElement square = zero;
    core::FieldElement right = zero;
    core::fieldAdd(y, x, sum);
    multiply(y, sum, left);
    multiply(x, x, square);
    core::fieldAdd(x, projectCurve.coefficientA, sum);
    multiply(square, sum, right);
    core::fieldAddTo(right, projectCurve.coefficientB);
    return core::fieldCompare(left, right) == 0;
}

/// Whether (n - 1) * P has the x of P, for a point on the curve with an x other than zero: then it
/// is -P, since (n - 2) * P is infinity for no point of an order among 2, n and 2n. The product n *
/// P would tell nothing: `pointAdd` takes -P for P where x has a zero top word, and doubles.
bool isOfOrder(const core::CurvePoint& P) {
    core::FieldElement factor = projectCurve.order;
    factor.words[0] -= 1;
    core::PointTemporary product(projectCurve.degree);
    pointProduct(factor, P, *product);
    return core::fieldCompare(*product->x, *P.x) == 0;
}

/// Whether the point is on the curve and of order n.
bool checkPoint(Checked& checked, const StoredPoint& stored) {
    const bool xIsSound = checkCoordinate(checked, stored.xId, stored.x);
    if (!checkCoordinate(checked, stored.yId, stored.y) || !xIsSound) {
        return false;
    }
    if (core::fieldIsZero(stored.x) && core::fieldIsZero(stored.y)) {
        checked.find(Finding::infinity, KeyDamage::points,
                     "the " + stored.name +
                         " is (0, 0), which some software writes for infinity; it is not a point "
                         "of the curve");
        return false;
    }
    if (!isOnCurve(stored.x, stored.y)) {
        checked.find(Finding::offCurve, KeyDamage::points,
                     "the " + stored.name + " is not on the curve");
        return false;
    }
    if (core::fieldIsZero(stored.x)) {
        checked.find(Finding::xZero, KeyDamage::points,
                     "the " + stored.name + " has x = 0: it is the point of order 2");
        return false;
    }
    if (!isOfOrder(stored.point())) {
        checked.find(Finding::wrongOrder, KeyDamage::points,
                     "the " + stored.name + " is not of order n");
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
        checked.find(Finding::negativeScalar, id, KeyDamage::none,
                     namedAttribute(id) + " is marked as negative, which the program ignores");
    }
    if (const auto refusal = keyRefusal(checked.key.privateScalarFault())) {
        checked.find(*refusal, id, KeyDamage::none);
        return false;
    }
    core::CoreInteger scalar = *checked.key.privateScalar;
    core::integerNormalise(scalar);
    const std::uint64_t bits = core::integerBitLength(scalar);
    const std::uint64_t bytes = sizeof(std::uint32_t) + core::integerByteLength(scalar);
    const std::uint32_t statedBits = checked.key.loadingOf(id).found;
    if (statedBits != bits) {
        checked.find(Finding::dishonestLength, id, KeyDamage::none,
                     namedAttribute(id) + " states " + counted(statedBits, "bit") + ", but has " +
                         std::to_string(bits));
    } else if (checked.project.attributeSize(id) != bytes) {
        checked.find(Finding::dishonestLength, id, KeyDamage::none,
                     namedAttribute(id) + " has " +
                         counted(checked.project.attributeSize(id), "byte") + " instead of " +
                         std::to_string(bytes));
    }
    core::CoreInteger order{.capacity = core::integerLimbRoom};
    core::fieldToInteger(projectCurve.order, order);
    if (scalar.lengthAndSign == 0) {
        checked.find(Finding::scalarRange, id, KeyDamage::scalar, namedAttribute(id) + " is zero");
        return false;
    }
    if (core::integerCompare(scalar, order) >= 0) {
        checked.find(Finding::scalarRange, id, KeyDamage::scalar,
                     namedAttribute(id) + " is not below the order");
        return false;
    }
    return true;
}

/// Compares the public point with the product of scalar and base point, all of them sound.
void checkProduct(Checked& checked, const StoredPoint& base, const StoredPoint& publicPoint) {
    core::FieldElement scalar{.degree = projectCurve.degree,
                              .capacity = projectCurve.order.capacity};
    core::CoreInteger value = *checked.key.privateScalar;
    core::integerNormalise(value);
    core::fieldFromInteger(value, scalar);
    core::PointTemporary product(projectCurve.degree);
    pointProduct(scalar, base.point(), *product);
    if (core::fieldCompare(*product->x, publicPoint.x) != 0 ||
        core::fieldCompare(*product->y, publicPoint.y) != 0) {
        checked.find(Finding::keyMismatch, KeyDamage::scalar,
                     "the public point is not the product of the private scalar and the base "
                     "point");
    }
}

bool verifiesOnly(const ProjectFile& project) {
    return project.attributeSize(privateScalarAttribute) == 0;
}

}  // namespace

ProjectCheck checkProject(const std::string& path) {
    ProjectCheck check;
    ProjectReading reading = readProject(path);
    if (reading.unreadable) {
        check.unjudged = reading.refusal->text;
        return check;
    }
    if (reading.refusal.has_value()) {
        check.findings.push_back({.code = reading.refusal->code,
                                  .attribute = std::nullopt,
                                  .text = reading.refusal->text});
        return check;
    }
    check.verifiesOnly = verifiesOnly(reading.project);
    checkRepetition(reading.project.directory(), check.findings);
    for (const Findings& more :
         {checkProtection(path, !check.verifiesOnly), checkKey(reading.project)}) {
        check.findings.insert(check.findings.end(), more.begin(), more.end());
    }
    check.project = std::move(reading.project);
    return check;
}

std::vector<ProjectFinding> checkKey(const ProjectFile& project) {
    Checked checked{.project = project};
    checked.key.loadFromAttributes(project);
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
    const bool scalarIsSound = !verifiesOnly(project) && checkScalar(checked);
    if (baseIsSound && publicPointIsSound && scalarIsSound) {
        checkProduct(checked, base, publicPoint);
    }
    return checked.findings;
}

std::optional<std::string> unsoundKey(const ProjectFile& project) {
    const Findings findings = checkKey(project);
    const auto found = std::find_if(findings.begin(), findings.end(), [](const auto& finding) {
        return finding.damage != KeyDamage::none;
    });
    return found == findings.end() ? std::nullopt : std::optional(found->text);
}
