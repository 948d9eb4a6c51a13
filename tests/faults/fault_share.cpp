#include "tests/faults/fault_share.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "tests/support/long_run.h"
#include "tests/support/random_operands.h"

std::vector<std::size_t> shareOf(std::size_t cases, std::size_t count) {
    std::vector<std::size_t> all(cases);
    std::iota(all.begin(), all.end(), 0);
    if (isLongRun() || cases <= count) {
        return all;
    }
    std::vector<std::size_t> share;
    std::sample(all.begin(), all.end(), std::back_inserter(share), count, testRandom());
    return share;
}
