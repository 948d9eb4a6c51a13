#include "tests/faults/fault_share.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <string_view>

#include "tests/support/random_operands.h"

bool isWholeRun() {
    const char* given = std::getenv("SIGN_FAULTS");
    return given != nullptr && std::string_view(given) == "whole";
}

std::vector<std::size_t> shareOf(std::size_t cases, std::size_t count) {
    std::vector<std::size_t> all(cases);
    std::iota(all.begin(), all.end(), 0);
    if (isWholeRun() || cases <= count) {
        return all;
    }
    std::vector<std::size_t> share;
    std::sample(all.begin(), all.end(), std::back_inserter(share), count, testRandom());
    return share;
}
