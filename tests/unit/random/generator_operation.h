#pragma once

#include <functional>

#include "random/random_generator.h"

struct GeneratorOperation {
    const char* name;
    std::function<void(RandomGenerator&)> run;
};
