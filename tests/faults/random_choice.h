#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/random_operands.h"

// Choices of the test's generator.

inline bool oneIn(std::uint64_t count) {
    return randomBelow(count) == 0;
}

template <typename Container>
const typename Container::value_type& oneOf(const Container& choices) {
    return choices[randomBelow(choices.size())];
}

inline std::string anyOf(const std::vector<std::string>& words) {
    return oneOf(words);
}

/// Up to eleven bytes of any kind.
std::string randomText();

/// Puts a byte in, takes some out, changes one, or cuts the text.
void mutate(std::string& text);
