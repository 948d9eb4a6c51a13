#pragma once

#include "curve/fast/fast_route.h"

/// Makes `core::fastRoute` give this route, null for none, for the scope's life. Outside of one it
/// gives what it gives in the program.
class ChosenRoute {
public:
    explicit ChosenRoute(const core::FastRoute* route);
    ~ChosenRoute();
    ChosenRoute(const ChosenRoute&) = delete;
    ChosenRoute& operator=(const ChosenRoute&) = delete;

private:
    const core::FastRoute* before_;
};
