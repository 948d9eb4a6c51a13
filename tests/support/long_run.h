#pragma once

#include <cstdlib>

/// A count of test cases: `ordinary`, or `wanted` where SIGN_LONG_RUN is set in the environment.
inline int roundsOf(int ordinary, int wanted) {
    return std::getenv("SIGN_LONG_RUN") == nullptr ? ordinary : wanted;
}
