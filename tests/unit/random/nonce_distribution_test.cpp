#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <vector>

#include "curve/field_element.h"
#include "curve/random_scalar.h"
#include "curve/sect163r2.h"
#include "random/random_generator.h"
#include "tests/support/long_run.h"
#include "tests/support/random_operands.h"

namespace {

/// The order is 2^162 and a number below 2^82, so the bits below this one are uniform to any test.
constexpr std::size_t uniformBits = 162;

/// Uniform nonces fail one of the tests below less than once in 10^8 runs.
constexpr double deviations = 7.5;

using Nonce = std::array<std::uint64_t, 3>;

bool bitOf(const Nonce& nonce, std::size_t index) {
    return (nonce[index / 64] >> index % 64 & 1) != 0;
}

/// The nonces of one process, in their order, from a seed that is printed.
class NonceDistribution : public testing::Test {
protected:
    static void SetUpTestSuite() {
        RandomGenerator::instance().seedFromWord(static_cast<std::uint32_t>(testSeed()));
        nonces.resize(static_cast<std::size_t>(roundsOf(100000, 1000000)));
        for (Nonce& nonce : nonces) {
            core::FieldElement drawn{.degree = 163, .capacity = 48};
            core::drawScalar(drawn, core::sect163r2.domain.order);
            std::copy_n(drawn.words.begin(), nonce.size(), nonce.begin());
        }
        std::cout << nonces.size() << " nonces of one process" << std::endl;
    }
    static void TearDownTestSuite() { nonces = {}; }

    /// How far a count of fair coin tosses lies from its mean, in standard deviations.
    static double deviation(std::size_t heads, std::size_t tosses) {
        const auto mean = static_cast<double>(tosses) / 2;
        return std::abs(static_cast<double>(heads) - mean) / std::sqrt(mean / 2);
    }

    static std::vector<Nonce> nonces;
};

std::vector<Nonce> NonceDistribution::nonces;

TEST_F(NonceDistribution, HasEachBitSetInHalfOfTheNonces) {
    for (std::size_t bit = 0; bit < uniformBits; ++bit) {
        const auto ones = std::count_if(nonces.begin(), nonces.end(),
                                        [bit](const Nonce& nonce) { return bitOf(nonce, bit); });
        EXPECT_LT(deviation(static_cast<std::size_t>(ones), nonces.size()), deviations)
            << "bit " << bit;
    }
}

TEST_F(NonceDistribution, HasNeighbouringBitsEqualInHalfOfTheNonces) {
    for (std::size_t bit = 1; bit < uniformBits; ++bit) {
        const auto equal = std::count_if(nonces.begin(), nonces.end(), [bit](const Nonce& nonce) {
            return bitOf(nonce, bit - 1) == bitOf(nonce, bit);
        });
        EXPECT_LT(deviation(static_cast<std::size_t>(equal), nonces.size()), deviations)
            << "bits " << bit - 1 << " and " << bit;
    }
}

TEST_F(NonceDistribution, HasEachBitIndependentOfTheNextNonce) {
    for (std::size_t bit = 0; bit < uniformBits; ++bit) {
        std::size_t equal = 0;
        for (std::size_t i = 1; i < nonces.size(); ++i) {
            equal += bitOf(nonces[i - 1], bit) == bitOf(nonces[i], bit) ? 1 : 0;
        }
        EXPECT_LT(deviation(equal, nonces.size() - 1), deviations) << "bit " << bit;
    }
}

TEST_F(NonceDistribution, HasEveryValueOfEachByteEquallyOften) {
    constexpr std::size_t values = 256;
    const auto expected = static_cast<double>(nonces.size()) / values;
    for (std::size_t low = 0; low + 8 <= uniformBits; low += 6) {
        std::array<std::size_t, values> counts{};
        for (const Nonce& nonce : nonces) {
            std::size_t value = 0;
            for (std::size_t bit = 8; bit-- > 0;) {
                value = 2 * value + (bitOf(nonce, low + bit) ? 1 : 0);
            }
            ++counts[value];
        }
        double chiSquare = 0;
        for (const std::size_t count : counts) {
            const double difference = static_cast<double>(count) - expected;
            chiSquare += difference * difference / expected;
        }
        // Of 255 degrees of freedom: mean 255, variance 510. Too even is as wrong as uneven.
        EXPECT_LT(std::abs(chiSquare - 255) / std::sqrt(510.0), deviations) << "bits from " << low;
    }
}

TEST_F(NonceDistribution, HasNoNonceTwiceAndNoneOutsideItsRange) {
    std::vector<Nonce> sorted = nonces;
    std::sort(sorted.begin(), sorted.end(), [](const Nonce& a, const Nonce& b) {
        return std::lexicographical_compare(a.rbegin(), a.rend(), b.rbegin(), b.rend());
    });
    EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
    EXPECT_NE(sorted.front(), Nonce{});
    // The order's top words; a nonce of its size does not come up.
    EXPECT_LT(sorted.back()[2], std::uint64_t{1} << 34);
}

}  // namespace
