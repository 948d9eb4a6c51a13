// Multiples of points on the second route, judged by the defining one and by libcrypto.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "curve/field.h"
#include "curve/point.h"
#include "curve/sect163r2.h"
#include "tests/support/curve_keys.h"
#include "tests/support/fast_routes.h"
#include "tests/support/leak_check.h"
#include "tests/support/long_run.h"
#include "tests/support/random_operands.h"

namespace {

/// Products of each kind that are compared with the defining route.
int comparedProducts() {
    return roundsOf(2000, 1000000);
}

class FastMultiples : public LeakCheckedTest, public testing::WithParamInterface<NamedRoute> {
protected:
    /// x of k * P, as a number.
    static BigNumber multipleX(const BigNumber& k, const AffinePoint& P) {
        return numberOf(GetParam().route.multipleX(wordsOf(k), wordsOf(P.x)));
    }

    /// x of u1 * P + u2 * Q, or nothing when the route gives up.
    static std::optional<BigNumber> twinMultipleX(const BigNumber& u1, const AffinePoint& P,
                                                  const BigNumber& u2, const AffinePoint& Q) {
        core::Words163 x;
        if (!GetParam().route.twinMultipleX(pointOf(P), pointOf(Q), wordsOf(u1), wordsOf(u2), x)) {
            return std::nullopt;
        }
        return numberOf(x);
    }

    static bool isSound(const AffinePoint& P) {
        return GetParam().route.isSound(PointRecord(P, 112));
    }

    const BigNumber n = curveOrder();
    const CurveJudge judge{CurveJudge().randomPoint()};
    const AffinePoint P = judge.basePoint();
};

core::FieldElement randomScalarElement() {
    core::FieldElement k = elementFrom(0);
    do {
        core::fieldRandom(k);
    } while (core::fieldIsZero(k) || core::fieldCompare(k, core::sect163r2.domain.order) != -1);
    return k;
}

/// Points, each computed from the ones before by the defining arithmetic, and all of order n.
class PointWalk {
public:
    PointWalk() : first_(CurveJudge().randomPoint()), second_(CurveJudge().randomPoint()) {}

    const core::CurvePoint& first() const { return first_; }
    const core::CurvePoint& second() const { return second_; }

    /// Makes `R` the first point, and the first one the second.
    void go(const core::CurvePoint& R) {
        core::pointCopy(first_, second_);
        core::pointCopy(R, first_);
    }

private:
    PointRecord first_;
    PointRecord second_;
};

TEST_P(FastMultiples, AreThoseOfTheDefinition) {
    PointWalk walk;
    int differ = 0;
    for (int i = 0; i < comparedProducts(); ++i) {
        const core::FieldElement k = randomScalarElement();
        PointRecord R(pointAtInfinity());
        core::pointMultiply(k, walk.first(), core::sect163r2.coefficients, R,
                            core::sect163r2.domain.reductionPolynomial);
        differ += GetParam().route.multipleX(core::load163(k), core::load163(*walk.first().x)) ==
                          core::load163(*R->x)
                      ? 0
                      : 1;
        walk.go(R);
    }
    EXPECT_EQ(differ, 0);
}

TEST_P(FastMultiples, OfTwoPointsAreThoseOfTheDefinition) {
    PointWalk walk;
    int differ = 0;
    for (int i = 0; i < comparedProducts(); ++i) {
        const core::FieldElement u1 = randomScalarElement();
        const core::FieldElement u2 = randomScalarElement();
        PointRecord R(pointAtInfinity());
        core::pointMultiplyTwin(walk.first(), walk.second(), u1, u2, R,
                                core::sect163r2.coefficients,
                                core::sect163r2.domain.reductionPolynomial);
        core::Words163 x{};
        const bool found = GetParam().route.twinMultipleX(core::load163(walk.first()),
                                                          core::load163(walk.second()),
                                                          core::load163(u1), core::load163(u2), x);
        differ += found && x == core::load163(*R->x) ? 0 : 1;
        walk.go(R);
    }
    EXPECT_EQ(differ, 0);
}

/// 0 and the numbers around it, around n and its half, powers of two and their neighbours, and the
/// largest that a scalar of 163 bits can be.
std::vector<BigNumber> edgeScalars(const BigNumber& n) {
    std::vector<BigNumber> edges = {0, 3, 5, n >> 1, (n >> 1) + 1, n + 1, n + 2};
    for (std::uint64_t i = 0; i <= 3; ++i) {
        edges.push_back(n - i);
    }
    for (std::uint64_t bit = 0; bit < 163; ++bit) {
        edges.push_back(BigNumber::powerOfTwo(bit));
        edges.push_back(BigNumber::powerOfTwo(bit + 1) - 1);
    }
    return edges;
}

/// A point of order n whose x has a zero top word.
AffinePoint pointOfShortX(const CurveJudge& judge) {
    while (true) {
        const auto found = judge.pointWithX(randomPolynomial(128) + 1);
        if (found && judge.multiply(curveOrder(), *found).infinity) {
            return *found;
        }
    }
}

TEST_P(FastMultiples, ByEdgeScalarsAreThoseOfTheJudge) {
    for (const AffinePoint& point : {P, CurveJudge().basePoint(), pointOfShortX(judge)}) {
        for (const BigNumber& k : edgeScalars(n)) {
            const AffinePoint R = judge.multiply(k, point);
            ASSERT_EQ(multipleX(k, point), R.infinity ? BigNumber(0) : R.x) << k;
        }
    }
}

TEST_P(FastMultiples, OfTwoPointsByEdgeScalarsAreThoseOfTheJudge) {
    for (const AffinePoint& Q : {judge.randomPoint(), pointOfShortX(judge)}) {
        for (const BigNumber& u : edgeScalars(n)) {
            const BigNumber other = judge.randomScalar();
            for (const auto& [u1, u2] : {std::pair(u, other), std::pair(other, u),
                                         std::pair(u, BigNumber(0)), std::pair(BigNumber(0), u)}) {
                const AffinePoint R = judge.multiplyTwin(u1, u2, Q);
                const auto x = twinMultipleX(u1, P, u2, Q);
                // Infinity has no x. Nothing is said of the point of a scalar of n or above, whose
                // walk may lead through infinity.
                ASSERT_FALSE(R.infinity && x.has_value()) << u1 << ", " << u2;
                if (!R.infinity && u < n) {
                    // 2m = n - 1 is the walk's one meeting with an entry of the same x.
                    ASSERT_TRUE(x.has_value() || (u == n - 2 && (u1.isZero() || u2.isZero())))
                        << u1 << ", " << u2;
                }
                if (x.has_value()) {
                    ASSERT_EQ(*x, R.x) << u1 << ", " << u2;
                } else {
                    ASSERT_TRUE(R.infinity || u >= n - 3) << u1 << ", " << u2;
                }
            }
        }
    }
}

TEST_P(FastMultiples, OfRelatedPointsAreThoseOfTheJudgeOrGivenUp) {
    // Q = factor * P. Where entries of the table have one x, no scalar can be served.
    const BigNumber half = (n + 1) >> 1;
    const std::vector<std::pair<BigNumber, bool>> factors = {
        {1, true},     {2, true},        {3, true},
        {n - 1, true}, {n - 2, true},    {n - 3, true},
        {half, true},  {n - half, true}, {n - BigNumber(3).inverseModulo(n), true},
        {4, false},    {5, false},       {n - 4, false}};
    for (const auto& [factor, givenUp] : factors) {
        const AffinePoint Q = judge.multiply(factor, P);
        for (int i = 0; i < 20; ++i) {
            const BigNumber u1 = judge.randomScalar();
            const BigNumber u2 = judge.randomScalar();
            const auto x = twinMultipleX(u1, P, u2, Q);
            EXPECT_FALSE(givenUp && x.has_value()) << factor;
            if (x.has_value()) {
                EXPECT_EQ(*x, judge.multiplyTwin(u1, u2, Q).x) << factor;
            }
        }
    }
}

TEST_P(FastMultiples, AreGivenUpWhereTheWalkMeetsTwoPointsOfOneX) {
    // Behind some windows the walk is at 4 * (a1 * P + a2 * Q), and the next entry is i * P + j *
    // Q: the factor of Q = factor * P that makes them the same or opposite.
    for (int round = 0; round < 200; ++round) {
        const BigNumber a1 = judge.randomScalar() >> (8 + randomBelow(100));
        const BigNumber a2 = judge.randomScalar() >> (8 + randomBelow(100));
        const BigNumber i = randomBelow(4);
        const BigNumber j = i.isZero() ? BigNumber(1 + randomBelow(3)) : BigNumber(randomBelow(4));
        const bool same = randomBelow(2) == 0;
        // 4 * a1 + 4 * a2 * factor = +-(i + j * factor).
        const BigNumber numerator = same ? i + n - (a1 * 4) % n : n - (i + a1 * 4) % n;
        const BigNumber denominator = same ? (a2 * 4 + n - j) % n : (a2 * 4 + j) % n;
        const BigNumber factor = numerator * denominator.inverseModulo(n) % n;
        const AffinePoint point = round % 2 == 0 ? P : pointOfShortX(judge);
        const AffinePoint Q = judge.multiply(factor, point);
        EXPECT_EQ(twinMultipleX(a1 * 4 + i, point, a2 * 4 + j, Q), std::nullopt);
        EXPECT_EQ(twinMultipleX((a1 * 4 + i) * 16 + 7, point, (a2 * 4 + j) * 16 + 9, Q),
                  std::nullopt);
        // Without the window in which they meet.
        EXPECT_EQ(twinMultipleX(a1, point, a2, Q), judge.multiply((a1 + a2 * factor) % n, point).x);
    }
}

TEST_P(FastMultiples, AreOfferedForEveryPointOfTheOrderAndNoOtherOfTheCurve) {
    int sound = 0;
    for (int i = 0; i < 400; ++i) {
        const auto point = judge.pointWithX(randomPolynomial(163));
        if (!point) {
            continue;
        }
        const bool ofOrder = judge.multiply(n, *point).infinity;
        EXPECT_EQ(isSound(*point), ofOrder) << *point;
        EXPECT_EQ(isSound(judge.negative(*point)), ofOrder) << *point;
        sound += ofOrder ? 1 : 0;
    }
    EXPECT_GT(sound, 20) << "too few of either kind";
    EXPECT_TRUE(isSound(pointOfShortX(judge)));
    EXPECT_TRUE(isSound(CurveJudge().basePoint()));
}

TEST_P(FastMultiples, AreNotOfferedForUnsoundPoints) {
    const AffinePoint orderTwo = *judge.pointWithX(0);
    const BigNumber f = curvePolynomial();
    // What a kind of unsoundness makes of a sound point.
    using Spoil = std::function<AffinePoint(const AffinePoint&)>;
    const std::vector<std::pair<const char*, Spoil>> kinds = {
        {"x of another point",
         [&](const AffinePoint& S) {
             return AffinePoint{polynomialSum(S.x, BigNumber::powerOfTwo(randomBelow(163))), S.y};
         }},
        {"y of another point",
         [&](const AffinePoint& S) {
             return AffinePoint{S.x, polynomialSum(S.y, BigNumber::powerOfTwo(randomBelow(163)))};
         }},
        {"no point",
         [&](const AffinePoint&) {
             return AffinePoint{randomPolynomial(163), randomPolynomial(163)};
         }},
        {"order 2n", [&](const AffinePoint& S) { return judge.add(S, orderTwo); }},
        {"order 2", [&](const AffinePoint&) { return orderTwo; }},
        {"x = 0",
         [&](const AffinePoint&) {
             return AffinePoint{0, randomPolynomial(163)};
         }},
        {"x not reduced",
         [&](const AffinePoint& S) {
             return AffinePoint{polynomialSum(S.x, f << randomBelow(100)), S.y};
         }},
        {"y not reduced",
         [&](const AffinePoint& S) {
             return AffinePoint{S.x, polynomialSum(S.y, f << randomBelow(100))};
         }},
    };
    AffinePoint S = judge.randomPoint();
    const int rounds = roundsOf(100, 100000 / static_cast<int>(kinds.size()));
    for (int i = 0; i < rounds; ++i) {
        S = judge.twice(S);
        ASSERT_TRUE(isSound(S));
        for (const auto& [name, spoil] : kinds) {
            EXPECT_FALSE(isSound(spoil(S))) << name << ", made of " << S;
        }
    }
}

TEST_P(FastMultiples, AreNotOfferedForCoordinatesThatTheDefinitionReadsOtherwise) {
    const auto& isSoundPoint = GetParam().route.isSound;
    PointRecord point(P, 112);
    ASSERT_TRUE(isSoundPoint(point));
    point->flags = core::pointInfinity;
    EXPECT_FALSE(isSoundPoint(point));
    point->flags = 0;
    for (core::FieldElement* coordinate : {point->x, point->y}) {
        const core::FieldElement before = *coordinate;
        for (const std::uint64_t degree : {0U, 162U, 164U, 192U, 448U}) {
            coordinate->degree = degree;
            EXPECT_FALSE(isSoundPoint(point)) << degree;
        }
        *coordinate = before;
        for (const std::uint64_t capacity : {0U, 8U, 16U}) {
            coordinate->capacity = capacity;
            EXPECT_FALSE(isSoundPoint(point)) << capacity;
        }
        coordinate->capacity = 24;
        EXPECT_TRUE(isSoundPoint(point)) << "room for 163 bits and no more";
        *coordinate = before;
        for (std::size_t word = 3; word < 6; ++word) {
            coordinate->words[word] = 1;
            EXPECT_FALSE(isSoundPoint(point)) << word;
            *coordinate = before;
        }
    }
    EXPECT_TRUE(isSoundPoint(point));
}

INSTANTIATE_TEST_SUITE_P(By, FastMultiples, testing::ValuesIn(fastRoutes()),
                         routeName<testing::TestParamInfo<NamedRoute>>);

}  // namespace
