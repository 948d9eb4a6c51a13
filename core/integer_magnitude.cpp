#include "core/integer_magnitude.h"

#include "core/integer.h"

namespace core {

namespace {

void copyMagnitude(const CoreInteger& source, CoreInteger& destination) {
    integerCopy(source, destination);
    destination.lengthAndSign &= ~integerSignBit;
}

}  // namespace

void integerMarkNegative(CoreInteger& value) {
    if (value.lengthAndSign != 0) {
        value.lengthAndSign |= integerSignBit;
    }
}

void integerTrim(CoreInteger& value, std::uint32_t limbs) {
    while (limbs > 0 && value.limbs[limbs - 1] == 0) {
        --limbs;
    }
    const bool negative = integerIsNegative(value);
    value.lengthAndSign = limbs;
    if (negative) {
        integerMarkNegative(value);
    }
}

int compareMagnitudes(const CoreInteger& a, const CoreInteger& b) {
    const std::uint32_t limbs = integerLimbCount(a);
    if (limbs != integerLimbCount(b)) {
        return limbs < integerLimbCount(b) ? -1 : 1;
    }
    for (std::uint32_t i = limbs; i-- > 0;) {
        if (a.limbs[i] != b.limbs[i]) {
            return a.limbs[i] < b.limbs[i] ? -1 : 1;
        }
    }
    return 0;
}

void addMagnitudes(const CoreInteger& a, const CoreInteger& b, CoreInteger& result) {
    const bool aIsLarger = compareMagnitudes(a, b) >= 0;
    const CoreInteger& larger = aIsLarger ? a : b;
    const CoreInteger& smaller = aIsLarger ? b : a;
    copyMagnitude(larger, result);

    const std::uint32_t smallerCount = integerLimbCount(smaller);
    std::uint64_t carry = 0;
    std::uint32_t i = 0;
    for (; i < smallerCount || carry != 0; ++i) {
        const std::uint64_t addend = i < smallerCount ? smaller.limbs[i] : 0;
        const DoubleLimb sum = DoubleLimb{result.limbs[i]} + addend + carry;
        result.limbs[i] = static_cast<std::uint64_t>(sum);
        carry = static_cast<std::uint64_t>(sum >> 64);
    }
    if (i > integerLimbCount(result)) {
        result.lengthAndSign = i;
    }
}

void subtractMagnitudes(const CoreInteger& a, const CoreInteger& b, CoreInteger& result) {
    integerClear(result);
    const int order = compareMagnitudes(a, b);
    if (order == 0) {
        return;
    }
    if (order < 0) {
        subtractMagnitudes(b, a, result);
        integerMarkNegative(result);
        return;
    }
    copyMagnitude(a, result);

    const std::uint32_t aCount = integerLimbCount(a);
    const std::uint32_t bCount = integerLimbCount(b);
    if (bCount == 0) {
        return;
    }
    std::uint64_t borrow = 0;
    for (std::uint32_t i = 0; i < aCount && (i < bCount || borrow != 0); ++i) {
        const std::uint64_t subtrahend = i < bCount ? b.limbs[i] : 0;
        const DoubleLimb difference = DoubleLimb{result.limbs[i]} - subtrahend - borrow;
        result.limbs[i] = static_cast<std::uint64_t>(difference);
        borrow = static_cast<std::uint64_t>(difference >> 64) & 1;
    }
    integerTrim(result, aCount);
}

}  // namespace core
