#include "tests/faults/unsound_project.h"

#include <algorithm>

#include "tests/faults/random_choice.h"
#include "tests/support/big_number.h"
#include "tests/support/field_judge.h"
#include "tests/support/libcrypto_curve.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"

namespace {

/// Bits that the words of a coordinate have room for.
constexpr std::uint64_t coordinateRoom = 192;

const FieldJudge& field() {
    static const FieldJudge judge(curvePolynomial());
    return judge;
}

const CurveJudge& curve() {
    static const CurveJudge judge;
    return judge;
}

BigNumber randomElement() {
    return BigNumber::fromBytes(randomBytes(21)) % BigNumber::powerOfTwo(curveDegree);
}

/// c * f for a random c that leaves it room, and not zero.
BigNumber multipleOfPolynomial() {
    const std::uint64_t bits = coordinateRoom - curveDegree - 1;
    const BigNumber factor = BigNumber(1 + randomBelow((std::uint64_t{1} << bits) - 1));
    return polynomialProduct(factor, curvePolynomial());
}

/// By squaring 162 times.
BigNumber squareRoot(BigNumber value) {
    for (std::uint64_t i = 1; i < curveDegree; ++i) {
        value = field().square(value);
    }
    return value;
}

AffinePoint orderTwo() {
    return {.x = 0, .y = squareRoot(curve().coefficientB())};
}

/// P + T for the point T of order two, by the formulas.
AffinePoint orderTwiceN() {
    return curve().add(curve().randomPoint(), orderTwo());
}

/// 2P = -P when x(2P) = x. With y = t * x and t = u^2 that gives x = u^2 + u + 1.
AffinePoint orderThree() {
    const BigNumber u = randomElement();
    const BigNumber t = field().square(u);
    const BigNumber x = polynomialSum(polynomialSum(t, u), 1);
    return {.x = x, .y = field().multiply(x, t)};
}

AffinePoint cycleOfOne() {
    return {.x = 1, .y = randomBelow(2)};
}

AffinePoint slowCycle(std::uint64_t shift) {
    return {.x = 1, .y = curvePolynomial() << shift};
}

AffinePoint withBitsAbove(AffinePoint point) {
    const BigNumber above = BigNumber(1 + randomBelow((1U << 29) - 1)) << curveDegree;
    if (oneIn(2)) {
        point.x = point.x + above;
    } else {
        point.y = point.y + above;
    }
    return point;
}

/// Either a short multiple in y, with which all multiples of the point have one x, or any in both.
AffinePoint congruentCycle() {
    if (oneIn(2)) {
        return slowCycle(randomBelow(slowCycles));
    }
    AffinePoint point = cycleOfOne();
    point.x = polynomialSum(point.x, multipleOfPolynomial());
    if (oneIn(2)) {
        point.y = polynomialSum(point.y, multipleOfPolynomial());
    }
    return point;
}

BigNumber simpleElement() {
    static const std::vector<BigNumber> edges = edgePolynomials(curveDegree);
    return oneOf(edges);
}

AffinePoint flawedPoint(PointFlaw flaw) {
    switch (flaw) {
        case PointFlaw::none:
            return curve().randomPoint();
        case PointFlaw::offTheCurve:
            return {.x = randomElement(), .y = randomElement()};
        case PointFlaw::orderTwo:
            return orderTwo();
        case PointFlaw::orderTwiceN:
            return orderTwiceN();
        case PointFlaw::orderThree:
            return orderThree();
        case PointFlaw::xOfZero:
            return {.x = 0, .y = randomElement()};
        case PointFlaw::origin:
            return {.x = 0, .y = 0};
        case PointFlaw::cycleOfOne:
            return cycleOfOne();
        case PointFlaw::simple:
            return {.x = simpleElement(), .y = simpleElement()};
        case PointFlaw::bitsAboveTheDegree:
            return withBitsAbove(curve().randomPoint());
        case PointFlaw::congruentCycle:
            return congruentCycle();
        case PointFlaw::multiples:
            break;
    }
    return {.x = polynomialSum(multipleOfPolynomial(), randomBelow(3)),
            .y = oneIn(2) ? multipleOfPolynomial() : BigNumber(randomBelow(3))};
}

AffinePoint pointOf(const std::string& x, const std::string& y) {
    return {.x = BigNumber::fromHexadecimal(x), .y = BigNumber::fromHexadecimal(y)};
}

/// The scalar that makes every s zero if r is always this.
Bytes scalarOfRetries(const BigNumber& r, std::string_view data) {
    return integerValue(scalarOfZeroS(Bytes(data.begin(), data.end()), r.toHexadecimal()));
}

/// A scalar that makes every s zero where r is always that of the base point or of its double, or
/// one of another kind.
Bytes flawedScalar(const AffinePoint& base, const ProjectKey& sound, std::string_view data) {
    const BigNumber n = curve().order();
    const BigNumber r = (oneIn(2) ? base.x : polynomialSum(base.x, base.y)) % n;
    switch (randomBelow(8)) {
        case 0:
            return integerValue(0, {});
        case 1:
            return integerValue(65, Bytes(9));
        case 2:
            return integerValue((n + BigNumber(randomBelow(3)) - 1).toHexadecimal());
        case 3:
            return integerValue(320, Bytes(40, 0xFF));
        case 4:
            return integerValue(static_cast<std::uint32_t>(randomBelow(330)), randomBytes(41));
        case 5:
            return integerValue(sound.scalar);
        default:
            return r.isZero() ? integerValue(sound.scalar) : scalarOfRetries(r, data);
    }
}

void putPoint(AttributeValues& attributes, std::uint32_t id, const AffinePoint& point) {
    const auto filler = static_cast<std::uint8_t>(oneIn(4) ? randomBelow(256) : 0);
    attributes[id] = elementValue(curveDegree, point.x.toHexadecimal(), filler);
    attributes[id + 1] = elementValue(curveDegree, point.y.toHexadecimal(), filler);
}

/// Leaves one attribute out, fills one with anything, or appends to one what is not read.
void spoilOneAttribute(AttributeValues& attributes) {
    const auto id = static_cast<std::uint32_t>(72 + randomBelow(5));
    Bytes& value = attributes[id];
    switch (randomBelow(8)) {
        case 0:
            attributes.erase(id);
            break;
        case 1:
            value = randomBytes(1 + randomBelow(300));
            break;
        case 2:
            // Behind the bit count.
            std::generate(value.begin() + 4, value.end(),
                          [] { return static_cast<std::uint8_t>(randomBelow(256)); });
            break;
        case 3: {
            const Bytes padding = randomBytes(randomBelow(264));
            value.insert(value.end(), padding.begin(), padding.end());
            break;
        }
        default:
            break;
    }
}

std::string oddNumber() {
    const BigNumber n = curve().order();
    const std::vector<BigNumber> numbers = {0,
                                            1,
                                            2,
                                            n - 1,
                                            n,
                                            n + 1,
                                            n / 2,
                                            n - 2,
                                            BigNumber::powerOfTwo(162),
                                            BigNumber::powerOfTwo(160),
                                            BigNumber::powerOfTwo(168) - 1,
                                            BigNumber::powerOfTwo(128) - 1};
    return oneIn(2) ? oneOf(numbers).toHexadecimal() : randomNumber(1 + randomBelow(21));
}

}  // namespace

AttributeValues unsoundProject(const ProjectKey& sound, std::string_view data) {
    const AffinePoint soundBase = pointOf(sound.baseX, sound.baseY);
    const AffinePoint soundPublic = pointOf(sound.publicX, sound.publicY);
    AffinePoint base = soundBase;
    AffinePoint publicPoint = soundPublic;
    switch (randomBelow(7)) {
        case 0:
            base = flawedPoint(oneOf(pointFlaws));
            break;
        case 1:
            publicPoint = flawedPoint(oneOf(pointFlaws));
            break;
        case 2:
            base = flawedPoint(oneOf(pointFlaws));
            publicPoint = flawedPoint(oneOf(pointFlaws));
            break;
        case 3:
            base = flawedPoint(oneOf(pointFlaws));
            publicPoint = base;
            break;
        case 4:
            base = flawedPoint(oneOf(pointFlaws));
            publicPoint = {.x = base.x,
                           .y = oneIn(2) ? randomElement() : polynomialSum(base.x, base.y)};
            break;
        default:
            base = congruentCycle();
            publicPoint = oneIn(2) ? base : soundPublic;
    }
    AttributeValues attributes;
    putPoint(attributes, 72, base);
    putPoint(attributes, 75, publicPoint);
    attributes[74] = flawedScalar(base, sound, data);
    spoilOneAttribute(attributes);
    return attributes;
}

AttributeValues projectOfRetries(std::uint64_t shift, std::string_view data) {
    const AffinePoint base = slowCycle(shift);
    AttributeValues attributes;
    putPoint(attributes, 72, base);
    putPoint(attributes, 75, base);
    attributes[74] = scalarOfRetries(polynomialSum(base.x, base.y) % curve().order(), data);
    return attributes;
}

std::string oddSignature() {
    return signatureText({.r = oddNumber(), .s = oddNumber()}, oneIn(2) ? 21 : 1);
}
