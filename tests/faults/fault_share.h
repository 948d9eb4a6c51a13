#pragma once

#include <cstddef>
#include <vector>

/// All of the cases in a long run, otherwise `count` of them at random, in their order.
std::vector<std::size_t> shareOf(std::size_t cases, std::size_t count);
