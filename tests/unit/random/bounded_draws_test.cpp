#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "random/random_generator.h"
#include "tests/support/generator_model.h"
#include "tests/support/random_operands.h"

namespace {

/// The two widths of a bounded draw, in the generator and in the model.
struct Draw32 {
    using Word = std::uint32_t;
    static Word below(RandomGenerator& generator, Word bound) {
        return generator.next32Below(bound);
    }
    static Word candidate(GeneratorModel& model) { return model.next(); }
};

struct Draw64 {
    using Word = std::uint64_t;
    static Word below(RandomGenerator& generator, Word bound) {
        return generator.next64Below(bound);
    }
    static Word candidate(GeneratorModel& model) { return model.next64(); }
};

template <typename Draw>
class BoundedDraw : public testing::Test {
protected:
    using Word = typename Draw::Word;
    static constexpr Word largest = std::numeric_limits<Word>::max();
    static constexpr Word half = largest / 2 + 1;

    /// A generator and its model at the same place of one stream.
    struct Pair {
        RandomGenerator generator;
        GeneratorModel model;

        explicit Pair(std::uint32_t seed) : model(seed) { generator.seedFromWord(seed); }
        bool inStep() const { return generator.stateBlock == model.state(); }
    };

    static std::uint32_t randomSeed() { return static_cast<std::uint32_t>(testRandom()()); }

    /// The first candidate at or above the middle of the range, and a seed whose stream begins with
    /// it.
    static Word highCandidate(std::uint32_t& seed) {
        Word candidate = 0;
        while (candidate < half || candidate > largest - 4) {
            seed = randomSeed();
            GeneratorModel model(seed);
            candidate = Draw::candidate(model);
        }
        return candidate;
    }
};

using Widths = testing::Types<Draw32, Draw64>;
TYPED_TEST_SUITE(BoundedDraw, Widths);

TYPED_TEST(BoundedDraw, DrawsAgainAtOrAboveTheLargerOfBoundAndComplement) {
    using Word = typename TypeParam::Word;
    const Word half = TestFixture::half;
    const Word quarter = half / 2;
    std::vector<Word> bounds = {1,
                                2,
                                3,
                                10,
                                1000,
                                quarter - 1,
                                quarter,
                                half - 2,
                                half - 1,
                                half,
                                half + 1,
                                half + 2,
                                quarter * 3,
                                quarter / 2 * 3,
                                static_cast<Word>(TestFixture::largest - 1),
                                TestFixture::largest};
    for (int i = 0; i < 40; ++i) {
        const auto drawn = static_cast<Word>(testRandom()());
        bounds.push_back(std::max<Word>(drawn, 1));
    }
    typename TestFixture::Pair pair(TestFixture::randomSeed());
    for (const Word bound : bounds) {
        const Word limit = std::max<Word>(bound, TestFixture::largest - bound);
        for (int draw = 0; draw < 50; ++draw) {
            Word candidate = TypeParam::candidate(pair.model);
            while (candidate >= limit) {
                candidate = TypeParam::candidate(pair.model);
            }
            ASSERT_EQ(TypeParam::below(pair.generator, bound), candidate % bound)
                << "bound " << bound;
            ASSERT_TRUE(pair.inStep()) << "bound " << bound;
        }
    }
}

TYPED_TEST(BoundedDraw, CandidateEqualToABoundInTheUpperHalfIsDrawnAgain) {
    std::uint32_t seed = 0;
    const auto candidate = TestFixture::highCandidate(seed);
    typename TestFixture::Pair pair(seed);
    EXPECT_LT(TypeParam::below(pair.generator, candidate), candidate);
    TypeParam::candidate(pair.model);
    EXPECT_FALSE(pair.inStep());
}

TYPED_TEST(BoundedDraw, CandidateJustBelowABoundInTheUpperHalfIsTaken) {
    using Word = typename TypeParam::Word;
    std::uint32_t seed = 0;
    const Word candidate = TestFixture::highCandidate(seed);
    typename TestFixture::Pair pair(seed);
    EXPECT_EQ(TypeParam::below(pair.generator, static_cast<Word>(candidate + 1)), candidate);
    TypeParam::candidate(pair.model);
    EXPECT_TRUE(pair.inStep());
}

TYPED_TEST(BoundedDraw, CandidateEqualToTheComplementOfASmallBoundIsDrawnAgain) {
    using Word = typename TypeParam::Word;
    std::uint32_t seed = 0;
    const Word candidate = TestFixture::highCandidate(seed);
    const auto bound = static_cast<Word>(~candidate);
    typename TestFixture::Pair pair(seed);
    EXPECT_LT(TypeParam::below(pair.generator, bound), bound);
    TypeParam::candidate(pair.model);
    EXPECT_FALSE(pair.inStep());
}

TYPED_TEST(BoundedDraw, CandidateJustBelowTheComplementOfASmallBoundIsTaken) {
    using Word = typename TypeParam::Word;
    std::uint32_t seed = 0;
    const Word candidate = TestFixture::highCandidate(seed);
    const auto bound = static_cast<Word>(~candidate - 1);
    typename TestFixture::Pair pair(seed);
    EXPECT_EQ(TypeParam::below(pair.generator, bound), candidate % bound);
    TypeParam::candidate(pair.model);
    EXPECT_TRUE(pair.inStep());
}

// Other processors divide by zero without a fault.
#ifdef __x86_64__
/// Under this name, the test runs before those that start threads.
template <typename Draw>
class BoundedDrawDeathTest : public testing::Test {};
TYPED_TEST_SUITE(BoundedDrawDeathTest, Widths);

TYPED_TEST(BoundedDrawDeathTest, ABoundOfZeroEndsTheProcess) {
    RandomGenerator generator;
    generator.seedFromWord(1);
    EXPECT_DEATH(TypeParam::below(generator, 0), "");
}
#endif

}  // namespace
