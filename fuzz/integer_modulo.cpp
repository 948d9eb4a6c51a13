// Property: the remainder of any two non-negative integers, with zero limbs at their tops or not,
// is libcrypto's, in an object of its own and in the place of the dividend. A dividend below the
// modulus, by its length first, and a negative one, is copied as it stands; a zero modulus leaves
// the result as it was. The dividend survives, unless it is above the modulus and of its bit
// length: then it holds the remainder too.

#include "core/integer.h"
#include "fuzz/integer_operands.h"
#include "fuzz/property.h"

namespace {

constexpr std::uint32_t longestOperand = 8;

bool sameValue(const core::CoreInteger& a, const core::CoreInteger& b) {
    return a.lengthAndSign == b.lengthAndSign && a.limbs == b.limbs;
}

/// `before` is what the result held.
void checkRemainder(const core::CoreInteger& value, const FuzzOperands& operands,
                    const core::CoreInteger& before) {
    const auto& [a, b] = operands;
    if (a.value.lengthAndSign == 0) {
        require(isNormal(value, 0), "a zero dividend clears the result");
    } else if (b.value.lengthAndSign == 0) {
        require(isUnchanged(value, before), "a zero modulus leaves the result as it was");
    } else if (operands.below()) {
        require(sameValue(value, a.value), "what is below the modulus is copied as it stands");
    } else {
        require(isNormal(value, b.number.isZero() ? a.number : a.number % b.number),
                "the remainder is libcrypto's");
    }
}

/// A zero top limb gives 64 bits for each limb below it.
std::uint64_t statedBits(const FuzzInteger& integer) {
    const std::uint32_t limbs = integer.value.lengthAndSign;
    const bool zeroTop = limbs != 0 && integer.value.limbs[limbs - 1] == 0;
    return zeroTop ? std::uint64_t{64} * (limbs - 1) : integer.number.bitLength();
}

/// Whether the dividend itself is reduced.
bool inPlaceToo(const FuzzOperands& operands) {
    const auto& [a, b] = operands;
    const bool equal = a.value.lengthAndSign == b.value.lengthAndSign && a.number == b.number;
    return a.value.lengthAndSign != 0 && b.value.lengthAndSign != 0 && !operands.below() &&
           !equal && statedBits(a) == statedBits(b);
}

void checkNegative(const FuzzOperands& operands) {
    core::CoreInteger negative = operands.a.value;
    negative.lengthAndSign |= core::integerSignBit;
    const core::CoreInteger before = negative;
    core::CoreInteger result = usedInteger();
    core::integerModulo(negative, operands.b.value, &result);
    require(sameValue(result, before) && isUnchanged(negative, before),
            "a negative dividend is copied as it stands");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const FuzzOperands operands(input, longestOperand);
    const auto& [a, b] = operands;

    core::CoreInteger dividend = a.value;
    core::CoreInteger inPlace = a.value;
    core::CoreInteger result = usedInteger();
    core::integerModulo(dividend, b.value, &result);
    core::integerModulo(inPlace, b.value, nullptr);
    checkRemainder(result, operands, usedInteger());
    checkRemainder(inPlace, operands, a.value);
    require(inPlaceToo(operands) ? sameValue(dividend, result) : isUnchanged(dividend, a.value),
            "the dividend survives, or holds the remainder");
    if (!a.number.isZero() && b.value.lengthAndSign != 0) {
        checkNegative(operands);
    }
    return 0;
}
