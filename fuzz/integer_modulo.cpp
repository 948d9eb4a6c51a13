// Property: the remainder of any two non-negative integers, with zero limbs at their tops or not,
// is libcrypto's, in an object of its own and in the place of the dividend. A dividend below the
// modulus, and a negative one, is copied as it stands; a zero modulus leaves the result as it was.
// The dividend survives, unless it is normal, above the modulus and of its bit length: then it
// holds the remainder too.

#include "core/integer.h"
#include "fuzz/integer_operands.h"
#include "fuzz/property.h"

namespace {

constexpr std::uint32_t longestOperand = 8;

bool sameValue(const core::CoreInteger& a, const core::CoreInteger& b) {
    return a.lengthAndSign == b.lengthAndSign && a.limbs == b.limbs;
}

void checkRemainder(const core::CoreInteger& value, const FuzzOperands& operands) {
    const auto& [a, b, normal] = operands;
    if (a.number < b.number) {
        require(a.number.isZero() ? isNormal(value, 0) || sameValue(value, a.value)
                                  : sameValue(value, a.value),
                "what is below the modulus is copied as it stands");
    } else {
        require(isNormal(value, a.number % b.number), "the remainder is libcrypto's");
    }
}

/// A zero dividend clears the result first, unless its zero limbs hide that it is one.
void checkZeroModulus(const core::CoreInteger& result, const FuzzInteger& a) {
    const bool cleared = isNormal(result, 0);
    const bool left = isUnchanged(result, usedInteger());
    if (a.number.isZero()) {
        require(cleared || (left && a.value.lengthAndSign != 0),
                "a zero dividend clears the result");
    } else {
        require(left, "a zero modulus leaves the result as it was");
    }
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
    const auto& [a, b, normal] = operands;

    core::CoreInteger dividend = a.value;
    core::CoreInteger inPlace = a.value;
    core::CoreInteger result = usedInteger();
    core::integerModulo(dividend, b.value, &result);
    core::integerModulo(inPlace, b.value, nullptr);
    if (b.number.isZero()) {
        checkZeroModulus(result, a);
        return 0;
    }
    checkRemainder(result, operands);
    checkRemainder(inPlace, operands);
    const bool reduced =
        normal && a.number > b.number && a.number.bitLength() == b.number.bitLength();
    require(reduced ? isNormal(dividend, a.number % b.number) : isUnchanged(dividend, a.value),
            "the dividend survives, or holds the remainder");
    if (!a.number.isZero()) {
        checkNegative(operands);
    }
    return 0;
}
