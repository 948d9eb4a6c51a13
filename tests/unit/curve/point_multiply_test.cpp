#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "curve/field.h"
#include "curve/point.h"
#include "curve/sect163r2.h"
#include "tests/support/curve_keys.h"
#include "tests/support/leak_check.h"
#include "tests/support/libcrypto_curve.h"
#include "tests/support/random_operands.h"

namespace {

using core::FieldElement;

using NafEncode = LeakCheckedTest;
using PointMultiply = LeakCheckedTest;

/// What nafEncode wrote for one scalar: its digits in order, and how many bytes.
struct NafDigits {
    std::vector<int> digits;
    std::uint64_t written = 0;
};

NafDigits encode(const BigNumber& k, std::uint64_t degree) {
    constexpr std::uint8_t untouched = 0xAA;  // a code of 10 for each digit
    std::vector<std::uint8_t> buffer(core::nafBufferSize(degree), untouched);
    NafDigits naf;
    naf.written = core::nafEncode(elementFrom(k, degree, degree > 263 ? 112 : 48), buffer.data());
    EXPECT_LE(naf.written, buffer.size());
    for (std::size_t i = 0; i < 4 * buffer.size(); ++i) {
        const unsigned code = buffer[i / 4] >> 2 * (i % 4) & 3U;
        if (i < 4 * naf.written) {
            EXPECT_NE(code, 2U) << "digit " << i << " of " << k;
            naf.digits.push_back(code == 3 ? -1 : static_cast<int>(code));
        } else {
            EXPECT_EQ(code, 2U) << "more bytes touched than told";
        }
    }
    return naf;
}

/// Of all numbers of digits -1, 0 and 1, one alone has no two neighbours that are not 0.
void checkNaf(const BigNumber& k, std::uint64_t degree) {
    const NafDigits naf = encode(k, degree);
    BigNumber value;
    std::uint64_t length = 0;
    for (std::size_t i = 0; i < naf.digits.size(); ++i) {
        if (naf.digits[i] == 0) {
            continue;
        }
        const BigNumber weight = BigNumber::powerOfTwo(i);
        value = naf.digits[i] > 0 ? value + weight : value - weight;
        length = i + 1;
        if (i > 0) {
            ASSERT_EQ(naf.digits[i - 1], 0) << "neighbours at " << i << " of " << k;
        }
    }
    ASSERT_EQ(value, k);
    // Words of 32 digits, up to the one with the highest digit.
    ASSERT_EQ(naf.written, (length + 31) / 32 * 8) << k;
}

std::vector<BigNumber> edgeScalars() {
    const BigNumber n = curveOrder();
    std::vector<BigNumber> scalars = {n - 2,  n - 1,        n,        n + 1, n + 2,
                                      n >> 1, (n >> 1) + 1, n * 2 - 1};
    for (const BigNumber& edge : edgePolynomials(163)) {
        if (!edge.isZero()) {
            scalars.push_back(edge);
        }
    }
    return scalars;
}

TEST_F(NafEncode, OfZeroWritesNothing) {
    EXPECT_EQ(encode(0, 163).written, 0U);
}

TEST_F(NafEncode, WritesKnownForms) {
    // 7 = 8 - 1: the code 11, two digits of 0, the code 01.
    std::vector<std::uint8_t> buffer(core::nafBufferSize(163));
    EXPECT_EQ(core::nafEncode(elementFrom(7), buffer.data()), 8U);
    EXPECT_EQ(buffer[0], 0b01000011);
    EXPECT_EQ(std::count(buffer.begin() + 1, buffer.end(), 0), 88);
}

TEST_F(NafEncode, OfAllOnesHasOneDigitMore) {
    const NafDigits naf = encode(BigNumber::powerOfTwo(163) - 1, 163);
    EXPECT_EQ(naf.written, 48U);
    EXPECT_EQ(naf.digits[0], -1);
    EXPECT_EQ(naf.digits[163], 1);
    EXPECT_EQ(std::count(naf.digits.begin(), naf.digits.end(), 0), 190);
}

TEST_F(NafEncode, OfEdgeScalarsIsTheNonAdjacentForm) {
    for (const BigNumber& k : edgeScalars()) {
        checkNaf(k, 163);
    }
}

TEST_F(NafEncode, OfRandomScalarsIsTheNonAdjacentForm) {
    for (int i = 0; i < 5000; ++i) {
        checkNaf(randomPolynomial(163), 163);
    }
}

TEST_F(NafEncode, OfAllSmallScalarsIsTheNonAdjacentForm) {
    for (std::uint64_t k = 0; k < 4096; ++k) {
        checkNaf(k, 12);
    }
}

TEST_F(NafEncode, CarriesOutOfEveryTopWord) {
    for (std::uint64_t degree = 2; degree <= 448; ++degree) {
        checkNaf(BigNumber::powerOfTwo(degree) - 1, degree);
        checkNaf(randomPolynomial(degree), degree);
        checkNaf(BigNumber::powerOfTwo(degree) - 1 - BigNumber::powerOfTwo(degree / 2), degree);
    }
}

TEST_F(NafEncode, LeavesTheScalar) {
    const BigNumber k = randomPolynomial(163);
    const FieldElement scalar = elementFrom(k);
    std::vector<std::uint8_t> buffer(core::nafBufferSize(163));
    core::nafEncode(scalar, buffer.data());
    EXPECT_EQ(contentOf(scalar), k);
}

TEST_F(PointMultiply, ByOneTwoAndTheOrder) {
    const CurveJudge judge;
    for (int i = 0; i < 20; ++i) {
        const AffinePoint P = judge.randomPoint();
        EXPECT_EQ(multiple(1, P), P);
        EXPECT_EQ(multiple(2, P), judge.twice(P));
        EXPECT_EQ(multiple(3, P), judge.add(judge.twice(P), P));
        EXPECT_EQ(multiple(curveOrder() - 1, P), judge.negative(P));
        EXPECT_EQ(multiple(curveOrder(), P), pointAtInfinity());
        EXPECT_EQ(multiple(curveOrder() + 1, P), P);
    }
}

TEST_F(PointMultiply, ByEdgeScalarsMatchesTheJudge) {
    const CurveJudge judge(CurveJudge().randomPoint());
    const AffinePoint P = judge.basePoint();
    for (const BigNumber& k : edgeScalars()) {
        ASSERT_EQ(multiple(k, P), judge.multiply(k, P)) << k << " * " << P;
    }
}

TEST_F(PointMultiply, ByRandomScalarsMatchesTheJudge) {
    const CurveJudge published;
    for (int i = 0; i < 1500; ++i) {
        const CurveJudge judge(published.randomPoint());
        const BigNumber k = judge.randomScalar();
        const AffinePoint P = judge.basePoint();
        ASSERT_EQ(multiple(k, P), judge.multiply(k, P)) << k << " * " << P;
    }
}

TEST_F(PointMultiply, OfInfinityIsInfinity) {
    EXPECT_EQ(multiple(5, pointAtInfinity()), pointAtInfinity());
    EXPECT_EQ(multiple(curveOrder(), pointAtInfinity()), pointAtInfinity());
}

TEST_F(PointMultiply, MixesCapacities) {
    const CurveJudge judge;
    for (unsigned mix = 0; mix < 27; ++mix) {
        const AffinePoint P = judge.randomPoint();
        const BigNumber k = judge.randomScalar();
        const PointRecord record(P, programCapacities[mix % 3]);
        const FieldElement scalar = elementFrom(k, 163, programCapacities[mix / 3 % 3]);
        PointRecord out(pointAtInfinity(), programCapacities[mix / 9]);
        core::pointMultiply(scalar, record, core::sect163r2.coefficients, out,
                            core::sect163r2.domain.reductionPolynomial);
        EXPECT_EQ(affineFrom(out), judge.multiply(k, P));
        EXPECT_EQ(affineFrom(record), P);
        EXPECT_EQ(contentOf(scalar), k);
    }
}

}  // namespace
