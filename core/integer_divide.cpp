#include <algorithm>

#include "core/integer.h"
#include "core/integer_magnitude.h"

namespace core {

namespace {

constexpr std::uint64_t temporaryBits = 16384;
constexpr std::uint64_t limbBits = 64;

bool isNormal(const CoreInteger& value) {
    const std::uint32_t limbs = integerLimbCount(value);
    return limbs == 0 || value.limbs[limbs - 1] != 0;
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

}  // namespace

void integerDivide(const CoreInteger& a, const CoreInteger& b, CoreInteger& quotient) {
    integerClear(quotient);
    const IntegerTemporary remainder = trimmedCopy(a);
    const IntegerTemporary divisor = trimmedCopy(b);
    const std::int64_t order = integerCompare(*remainder, *divisor);
    if (order == 0) {
        integerCopy(integerOne, quotient);
        return;
    }
    if (order < 0 || integerIsZero(*remainder) || integerIsZero(*divisor) ||
        compareMagnitudes(*remainder, *divisor) < 0) {
        return;
    }

    const IntegerTemporary scratch(integerAlloc(temporaryBits));
    const std::uint64_t topBit = integerBitLength(*remainder) - integerBitLength(*divisor);
    integerShiftLeft(*divisor, topBit);
    const auto quotientLimbs = static_cast<std::uint32_t>(topBit / limbBits + 1);
    std::fill_n(quotient.limbs.begin(), quotientLimbs, 0);
    for (std::uint64_t bit = topBit + 1; bit-- > 0;) {
        if (compareMagnitudes(*remainder, *divisor) >= 0) {
            subtractInPlace(*remainder, *divisor, *scratch);
            quotient.limbs[bit / limbBits] |= std::uint64_t{1} << bit % limbBits;
        }
        integerShiftRight(*divisor, 1);
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
