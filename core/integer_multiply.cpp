#include <algorithm>

#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "core/verify.h"

namespace core {

void integerMultiply(const CoreInteger& a, const CoreInteger& b, CoreInteger& result) {
    verify(integerIsSound(a) && integerIsSound(b) && &result != &a && &result != &b &&
           integerLimbCount(a) + integerLimbCount(b) <= integerLimbRoom);
    integerClear(result);
    const std::uint32_t aCount = integerLimbCount(a);
    const std::uint32_t bCount = integerLimbCount(b);
    if (aCount == 0 || bCount == 0) {
        return;
    }
    // The sums begin at zero whatever the capacity of the result says.
    std::fill_n(result.limbs.begin(), aCount + bCount, 0);
    for (std::uint32_t i = 0; i < aCount; ++i) {
        std::uint64_t carry = 0;
        for (std::uint32_t j = 0; j < bCount; ++j) {
            const DoubleLimb sum =
                DoubleLimb{a.limbs[i]} * b.limbs[j] + result.limbs[i + j] + carry;
            result.limbs[i + j] = static_cast<std::uint64_t>(sum);
            carry = static_cast<std::uint64_t>(sum >> 64);
        }
        result.limbs[i + bCount] = carry;
    }
    integerTrim(result, aCount + bCount);
    if (integerIsNegative(a) != integerIsNegative(b)) {
        integerMarkNegative(result);
    }
}

}  // namespace core
