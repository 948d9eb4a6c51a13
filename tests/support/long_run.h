#pragma once

#include <cstdlib>

/// Whether SIGN_LONG_RUN is set in the environment: then tests leave nothing out.
inline bool isLongRun() {
    return std::getenv("SIGN_LONG_RUN") != nullptr;
}

/// A count of test cases: `ordinary`, or `wanted` in a long run.
inline int roundsOf(int ordinary, int wanted) {
    return isLongRun() ? wanted : ordinary;
}
