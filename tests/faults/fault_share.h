#pragma once

#include <cstddef>
#include <vector>

/// Whether SIGN_FAULTS of the environment is "whole": then tests leave nothing out.
bool isWholeRun();

/// All of the cases in a whole run, otherwise `count` of them at random, in their order.
std::vector<std::size_t> shareOf(std::size_t cases, std::size_t count);
