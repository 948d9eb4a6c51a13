#pragma once

#include "curve/fast/fast_field.h"
#include "curve/fast/fast_route.h"
#include "curve/fast/ladder.h"
#include "curve/fast/twin_walk.h"
#include "curve/point.h"
#include "curve/sect163r2_values.h"

namespace core {

/// `FastRoute::isSound`.
template <class Products>
bool isSoundPoint(const CurvePoint& P) {
    using Field = FastField<Products>;
    constexpr unsigned secondBitOfTrace = 157 - 128;
    if (pointIsInfinity(P) || !isReduced163(*P.x) || !isReduced163(*P.y) ||
        P.x->capacity < sizeof(Words163) || P.y->capacity < sizeof(Words163)) {
        return false;
    }
    const auto [x, y] = load163(P);
    // y^2 + xy = x^3 + x^2 + b.
    const Words163 left = Field::product(y, add163(y, x));
    const Words163 xPlusOne = {x[0] ^ 1, x[1], x[2]};
    const Words163 right =
        add163(Field::product(Field::square(x), xPlusOne), load163(sect163r2Values::coefficientB));
    return left == right && ((x[0] ^ x[2] >> secondBitOfTrace) & 1) == 1;
}

template <class Products>
inline constexpr FastRoute fastRouteBy = {.isSound = isSoundPoint<Products>,
                                          .multipleX = ladderMultipleX<Products>,
                                          .twinMultipleX = TwinWalk<Products>::multipleX};

}  // namespace core
