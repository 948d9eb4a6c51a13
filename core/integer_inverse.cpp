#include <algorithm>
#include <utility>

#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "core/verify.h"

namespace core {

namespace {

bool isOne(const CoreInteger& value) {
    return value.lengthAndSign == 1 && value.limbs[0] == 1;
}

/// minuend := minuend - quotient * factor, through the two scratch values.
void subtractMultiple(CoreInteger& minuend, const CoreInteger& quotient, const CoreInteger& factor,
                      CoreInteger& product, CoreInteger& difference) {
    integerMultiply(quotient, factor, product);
    integerSubtract(minuend, product, difference);
    integerCopy(difference, minuend);
}

}  // namespace

bool integerModularInverse(const CoreInteger& a, const CoreInteger& modulus, CoreInteger& result) {
    verify(integerIsSound(a) && integerIsSound(modulus) && &result != &a && &result != &modulus);
    // Extended Euclid. Each row holds a remainder and the factor with
    // remainder = factor * a (mod modulus); the factor of the modulus itself is not needed.
    // Nothing grows longer than the operands together, and clearing more takes longer than the
    // rest.
    const std::uint64_t temporaryBits =
        limbBits * std::min<std::uint64_t>(integerLimbCount(a) + integerLimbCount(modulus) + 1,
                                           integerLimbRoom);
    struct Row {
        IntegerTemporary factor;
        IntegerTemporary remainder;
    };
    Row u = {IntegerTemporary(integerAlloc(temporaryBits)),
             IntegerTemporary(integerAlloc(temporaryBits))};
    Row v = {IntegerTemporary(integerAlloc(temporaryBits)),
             IntegerTemporary(integerAlloc(temporaryBits))};
    const IntegerTemporary quotient(integerAlloc(temporaryBits));
    const IntegerTemporary product(integerAlloc(temporaryBits));
    const IntegerTemporary difference(integerAlloc(temporaryBits));
    integerCopy(modulus, *u.remainder);
    integerCopy(integerOne, *v.factor);
    integerCopy(a, *v.remainder);
    integerTrim(*v.remainder, integerLimbCount(*v.remainder));

    while (!integerIsZero(*v.remainder) && !isOne(*v.remainder)) {
        integerDivide(*u.remainder, *v.remainder, *quotient);
        subtractMultiple(*u.factor, *quotient, *v.factor, *product, *difference);
        subtractMultiple(*u.remainder, *quotient, *v.remainder, *product, *difference);
        std::swap(u, v);
    }
    if (integerIsZero(*v.remainder)) {
        integerClear(result);
        return false;
    }
    // The factor lies between -modulus and modulus.
    integerAdd(*v.factor, modulus, *difference);
    integerModulo(*difference, modulus, &result);
    return true;
}

}  // namespace core
