#include <gtest/gtest.h>

#include "curve/fast/fast_route.h"

namespace {

// The compiler asks the processor by itself.
bool processorCanTakeIt() {
#if defined(__x86_64__)
    return static_cast<bool>(__builtin_cpu_supports("pclmul"));
#else
    return false;
#endif
}

TEST(FastRoute, IsTheCarrylessOneWhereTheProcessorCanTakeIt) {
    EXPECT_EQ(core::fastRoute(), processorCanTakeIt() ? &core::carrylessRoute : &core::plainRoute);
}

}  // namespace
