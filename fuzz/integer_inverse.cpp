// Property: an integer has an inverse exactly when libcrypto finds its greatest common divisor with
// the modulus to be 1 and it is not zero; the inverse is libcrypto's, and without one the result is
// zero. Zero limbs at the top of the integer count for nothing.

#include "core/integer.h"
#include "fuzz/integer_operands.h"
#include "fuzz/property.h"

namespace {

constexpr std::uint32_t longestOperand = 4;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const FuzzOperands operands(input, longestOperand);
    const BigNumber& a = operands.a.number;
    const BigNumber& modulus = operands.b.number;
    if (modulus.isZero()) {
        return 0;
    }
    core::CoreInteger result = usedInteger();
    const bool found = core::integerModularInverse(operands.a.value, modulus.toInteger(), result);
    // Everything has the inverse 0 modulo 1, of which libcrypto will not hear; zero has none.
    const BigNumber expected =
        a.isZero() || modulus == BigNumber(1) ? BigNumber(0) : a.inverseModulo(modulus);
    require(found == (!expected.isZero() || (modulus == BigNumber(1) && !a.isZero())),
            "there is an inverse where libcrypto finds one");
    require(isNormal(result, expected), "the inverse is libcrypto's");
    return 0;
}
