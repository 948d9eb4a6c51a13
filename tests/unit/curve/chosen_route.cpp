#include "tests/unit/curve/chosen_route.h"

#include "curve/fast/processor.h"

namespace {

const core::FastRoute* chosen =
    core::hasCarrylessMultiplication() ? &core::carrylessRoute : &core::plainRoute;

}  // namespace

ChosenRoute::ChosenRoute(const core::FastRoute* route) : before_(chosen) {
    chosen = route;
}

ChosenRoute::~ChosenRoute() {
    chosen = before_;
}

const core::FastRoute* core::fastRoute() {
    return chosen;
}
