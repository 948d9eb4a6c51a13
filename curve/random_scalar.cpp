#include "curve/random_scalar.h"

#include <cstddef>
#include <cstdint>

#include "core/integer_magnitude.h"
#include "curve/declassify.h"
#include "curve/field.h"

namespace core {

namespace {

/// 1 when k is from 1 to order - 1, 0 otherwise; without a branch that depends on k.
std::uint64_t isScalar(const FieldElement& k, const FieldElement& order) {
    std::uint64_t bits = 0;
    std::uint64_t borrow = 0;
    for (std::size_t i = 0; i < fieldWords(k.degree); ++i) {
        bits |= k.words[i];
        const DoubleLimb difference = DoubleLimb{k.words[i]} - order.words[i] - borrow;
        borrow = static_cast<std::uint64_t>(difference >> limbBits) & 1;
    }
    const std::uint64_t isNotZero = (bits | (0 - bits)) >> (limbBits - 1);
    return isNotZero & borrow;
}

}  // namespace

void drawScalar(FieldElement& k, const FieldElement& order) {
    fieldClear(k);
    std::uint64_t taken = 0;
    do {
        fieldRandom(k);
        taken = isScalar(k, order);
        declassify(&taken, sizeof taken);
    } while (taken == 0);
}

}  // namespace core
