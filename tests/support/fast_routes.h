#pragma once

#include <string>
#include <vector>

#include "curve/fast/fast_route.h"
#include "curve/fast/processor.h"
#include "tests/support/field_judge.h"
#include "tests/support/libcrypto_curve.h"

/// The plain route, and the other one where the processor can take it.
struct NamedRoute {
    std::string name;
    const core::FastRoute& route;
};

inline std::vector<NamedRoute> fastRoutes() {
    std::vector<NamedRoute> routes = {{"Plain", core::plainRoute}};
    if (core::hasCarrylessMultiplication()) {
        routes.push_back({"Carryless", core::carrylessRoute});
    }
    return routes;
}

/// For the names of tests that are run with each.
template <typename Info>
std::string routeName(const Info& info) {
    return info.param.name;
}

inline core::Words163 wordsOf(const BigNumber& value) {
    return core::load163(elementFrom(value));
}

inline BigNumber numberOf(const core::Words163& words) {
    return BigNumber::fromLimbs({words.begin(), words.end()});
}

inline core::Point163 pointOf(const AffinePoint& P) {
    return {.x = wordsOf(P.x), .y = wordsOf(P.y)};
}
