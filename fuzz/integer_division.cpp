// Property: the quotient of any two non-negative integers, with zero limbs at their tops or not, is
// the one that libcrypto finds, as a normal integer with nothing above it. A dividend of fewer
// limbs than the divisor gives 0, equal operands give 1, and any other quotient by zero is 0. A
// negative dividend gives 0. The operands stay as they are.

#include "core/integer.h"
#include "fuzz/integer_operands.h"
#include "fuzz/property.h"

namespace {

constexpr std::uint32_t longestOperand = 8;

BigNumber expectedQuotient(const FuzzOperands& operands) {
    const auto& [a, b] = operands;
    if (operands.below()) {
        return 0;
    }
    if (b.number.isZero()) {
        return a.number.isZero() && a.value.lengthAndSign == b.value.lengthAndSign ? 1 : 0;
    }
    return a.number / b.number;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const FuzzOperands operands(input, longestOperand);
    const auto& [a, b] = operands;
    core::CoreInteger quotient = usedInteger();
    core::integerDivide(a.value, b.value, quotient);
    require(isNormal(quotient, expectedQuotient(operands)), "the quotient is libcrypto's");

    if (!a.number.isZero()) {
        core::CoreInteger negative = a.value;
        negative.lengthAndSign |= core::integerSignBit;
        quotient = usedInteger();
        core::integerDivide(negative, b.value, quotient);
        require(isNormal(quotient, 0), "a negative dividend gives zero");
    }
    return 0;
}
