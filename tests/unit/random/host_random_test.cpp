#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdlib>
#include <vector>

#include "core/host.h"
#include "curve/field_element.h"
#include "curve/random_scalar.h"
#include "curve/sect163r2.h"
#include "random/random_generator.h"
#include "tests/support/generator_model.h"
#include "tests/support/project_builder.h"
#include "tests/support/signature_vectors.h"

namespace {

TEST(RandomGeneratorInstance, IsOneForTheProcess) {
    EXPECT_EQ(&RandomGenerator::instance(), &RandomGenerator::instance());
}

TEST(HostRandomBytes, FillsFromTheProcessWideGenerator) {
    RandomGenerator::instance().seedFromWord(42);
    GeneratorModel model(42);
    for (const std::uint32_t length : {13U, 0U, 1U, 64U}) {
        Bytes buffer(length);
        core::hostRandomBytes(buffer.data(), length);
        EXPECT_EQ(buffer, model.bytes(length)) << "length " << length;
    }
    EXPECT_EQ(RandomGenerator::instance().stateBlock, model.state());
}

TEST(DrawScalar, GivesThePublishedNonceOfAFreshStream) {
    ASSERT_EQ(generatorCases().size(), 16U);
    for (const GeneratorCase& expected : generatorCases()) {
        RandomGenerator::instance().seedFromWord(expected.seed);
        core::FieldElement nonce{.degree = 163, .capacity = 48};
        core::drawScalar(nonce, core::sect163r2.domain.order);
        Bytes drawn(24);
        for (std::size_t i = 0; i < drawn.size(); ++i) {
            drawn[i] = static_cast<std::uint8_t>(nonce.words[i / 8] >> 8 * (i % 8));
        }
        Bytes published = littleEndianBytes(expected.nonce);
        published.resize(drawn.size());
        EXPECT_EQ(drawn, published) << "seed " << expected.seed;
    }
}

/// Ends the process: with 0 if a generator first used without any file to open gives bytes.
[[noreturn]] void useInstanceWithoutDevice() {
    const rlimit none{.rlim_cur = 0, .rlim_max = 0};
    if (::setrlimit(RLIMIT_NOFILE, &none) != 0 || std::fopen("/dev/urandom", "rb") != nullptr) {
        std::_Exit(2);
    }
    Bytes first(32);
    Bytes second(32);
    core::hostRandomBytes(first.data(), 32);
    core::hostRandomBytes(second.data(), 32);
    std::_Exit(first != second && first != Bytes(32) ? 0 : 1);
}

TEST(RandomGeneratorInstance, WorksWithoutAnyDevice) {
    // A process of its own, in which nothing has used the generator.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(useInstanceWithoutDevice(), testing::ExitedWithCode(0), "");
}

}  // namespace
