#include <algorithm>
#include <array>

#include "core/integer.h"
#include "core/integer_magnitude.h"

namespace core {

namespace {

constexpr std::uint64_t temporaryBits = 16384;
constexpr std::uint64_t limbBits = 64;

/// Without zero limbs at the top, and without a sign if it is zero.
bool isNormal(const CoreInteger& value) {
    const std::uint32_t limbs = integerLimbCount(value);
    return limbs == 0 ? value.lengthAndSign == 0 : value.limbs[limbs - 1] != 0;
}

/// A copy without the zero limbs at the top: only lengths of normal values say which is the
/// greater.
IntegerTemporary trimmedCopy(const CoreInteger& value) {
    IntegerTemporary copy(integerAlloc(temporaryBits));
    integerCopy(value, *copy);
    integerTrim(*copy, integerLimbCount(*copy));
    return copy;
}

/// |minuend| := |minuend| - |subtrahend|, where it is not below it.
void subtractInPlace(CoreInteger& minuend, const CoreInteger& subtrahend, CoreInteger& scratch) {
    subtractMagnitudes(minuend, subtrahend, scratch);
    integerCopy(scratch, minuend);
}

void subtractWhileNotBelow(CoreInteger& value, const CoreInteger& modulus, CoreInteger& scratch) {
    while (compareMagnitudes(value, modulus) >= 0) {
        subtractInPlace(value, modulus, scratch);
    }
}

/// A magnitude in as many limbs as the operation at hand needs; the others hold nothing.
///
/// Euclid's algorithm divides a hundred times for one inverse, with short quotients: making three
/// integers of full room for each division took longer than dividing.
struct Limbs {
    std::uint32_t count;
    std::array<std::uint64_t, integerLimbRoom> limbs;

    Limbs(const CoreInteger& value, std::uint32_t limbCount) : count(limbCount) {
        const auto* const end = std::copy_n(
            value.limbs.begin(), std::min(integerLimbCount(value), count), limbs.begin());
        std::fill(limbs.begin() + (end - limbs.begin()), limbs.begin() + count, 0);
    }
};

void shiftLeft(Limbs& value, std::uint64_t bits) {
    const auto places = static_cast<std::uint32_t>(bits / limbBits);
    const auto rest = static_cast<unsigned>(bits % limbBits);
    for (std::uint32_t i = value.count; i-- > 0;) {
        std::uint64_t limb = i >= places ? value.limbs[i - places] << rest : 0;
        if (rest != 0 && i > places) {
            limb |= value.limbs[i - places - 1] >> (limbBits - rest);
        }
        value.limbs[i] = limb;
    }
}

void shiftRightOne(Limbs& value) {
    for (std::uint32_t i = 0; i + 1 < value.count; ++i) {
        value.limbs[i] = value.limbs[i] >> 1 | value.limbs[i + 1] << (limbBits - 1);
    }
    value.limbs[value.count - 1] >>= 1;
}

bool isBelow(const Limbs& a, const Limbs& b) {
    for (std::uint32_t i = a.count; i-- > 0;) {
        if (a.limbs[i] != b.limbs[i]) {
            return a.limbs[i] < b.limbs[i];
        }
    }
    return false;
}

void subtract(Limbs& minuend, const Limbs& subtrahend) {
    std::uint64_t borrow = 0;
    for (std::uint32_t i = 0; i < minuend.count; ++i) {
        const DoubleLimb difference = DoubleLimb{minuend.limbs[i]} - subtrahend.limbs[i] - borrow;
        minuend.limbs[i] = static_cast<std::uint64_t>(difference);
        borrow = static_cast<std::uint64_t>(difference >> limbBits) & 1;
    }
}

}  // namespace

void integerDivide(const CoreInteger& a, const CoreInteger& b, CoreInteger& quotient) {
    integerClear(quotient);
    if (!isNormal(a) || !isNormal(b)) {
        const IntegerTemporary dividend = trimmedCopy(a);
        const IntegerTemporary divisor = trimmedCopy(b);
        integerDivide(*dividend, *divisor, quotient);
        return;
    }
    const std::int64_t order = integerCompare(a, b);
    if (order == 0) {
        integerCopy(integerOne, quotient);
        return;
    }
    if (order < 0 || integerIsZero(a) || integerIsZero(b) || compareMagnitudes(a, b) < 0) {
        return;
    }

    const std::uint64_t topBit = integerBitLength(a) - integerBitLength(b);
    Limbs remainder(a, integerLimbCount(a));
    Limbs divisor(b, remainder.count);
    shiftLeft(divisor, topBit);
    const auto quotientLimbs = static_cast<std::uint32_t>(topBit / limbBits + 1);
    std::fill_n(quotient.limbs.begin(), quotientLimbs, 0);
    for (std::uint64_t bit = topBit + 1; bit-- > 0;) {
        if (!isBelow(remainder, divisor)) {
            subtract(remainder, divisor);
            quotient.limbs[bit / limbBits] |= std::uint64_t{1} << bit % limbBits;
        }
        shiftRightOne(divisor);
    }
    integerTrim(quotient, quotientLimbs);
    if (integerIsNegative(a) != integerIsNegative(b)) {
        integerMarkNegative(quotient);
    }
}

void integerModulo(CoreInteger& a, const CoreInteger& modulus, CoreInteger* result) {
    CoreInteger& remainder = result != nullptr ? *result : a;
    if (integerIsZero(a)) {
        integerClear(remainder);
        return;
    }
    if (integerIsZero(modulus)) {
        return;
    }
    if (!isNormal(a) || !isNormal(modulus)) {
        const IntegerTemporary trimmed = trimmedCopy(a);
        const IntegerTemporary trimmedModulus = trimmedCopy(modulus);
        if (integerCompare(*trimmed, *trimmedModulus) >= 0) {
            integerModulo(*trimmed, *trimmedModulus, &remainder);
        } else if (&remainder != &a) {
            integerCopy(a, remainder);
        }
        return;
    }

    const std::int64_t order = integerCompare(a, modulus);
    if (order == 0) {
        integerClear(remainder);
        return;
    }
    const IntegerTemporary scratch(integerAlloc(temporaryBits));
    const std::uint64_t aBits = integerBitLength(a);
    const std::uint64_t modulusBits = integerBitLength(modulus);
    if (order > 0 && aBits > modulusBits) {
        const IntegerTemporary shifted(integerAlloc(temporaryBits));
        const IntegerTemporary value(integerAlloc(temporaryBits));
        integerCopy(a, *value);
        integerCopy(modulus, *shifted);
        integerShiftLeft(*shifted, aBits - modulusBits);
        for (std::uint64_t shift = aBits - modulusBits; shift != 0; --shift) {
            subtractWhileNotBelow(*value, *shifted, *scratch);
            integerShiftRight(*shifted, 1);
        }
        subtractWhileNotBelow(*value, *shifted, *scratch);
        integerCopy(*value, remainder);
        return;
    }
    if (order > 0) {
        subtractWhileNotBelow(a, modulus, *scratch);
    }
    if (&remainder != &a) {
        integerCopy(a, remainder);
    }
}

}  // namespace core
