#include <gtest/gtest.h>

#include "curve/fast/fast_route.h"

namespace {

// The compiler asks the processor by itself.
TEST(FastRoute, IsTheCarrylessOneWhereTheProcessorCanTakeIt) {
    EXPECT_EQ(core::fastRoute(),
              __builtin_cpu_supports("pclmul") ? &core::carrylessRoute : &core::plainRoute);
}

}  // namespace
