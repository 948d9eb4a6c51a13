#include "core/montgomery.h"

#include <algorithm>

#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "core/verify.h"

namespace core {

MontgomeryContext montgomeryContext;

namespace {

constexpr std::uint64_t setupBits = 16384;
constexpr std::uint64_t productBits = 15384;

}  // namespace

void montgomerySetup(const CoreInteger& modulus) {
    montgomeryContext.montgomeryFactor = integerAlloc(setupBits);
    montgomeryContext.montgomeryRadix = integerAlloc(setupBits);
    CoreInteger& radix = *montgomeryContext.montgomeryRadix;
    const IntegerTemporary inverse(integerAlloc(setupBits));
    const IntegerTemporary product(integerAlloc(setupBits));

    const auto limbs = static_cast<std::uint32_t>(integerBitLength(modulus) / limbBits + 1);
    radix.limbs[limbs] = 1;
    radix.lengthAndSign = limbs + 1;

    // R * R' - F * modulus = 1.
    integerModularInverse(radix, modulus, *inverse);
    integerMultiply(radix, *inverse, *product);
    integerSubtract(*product, integerOne, *inverse);
    integerDivide(*inverse, modulus, *montgomeryContext.montgomeryFactor);
}

void montgomeryTeardown() {
    integerRelease(montgomeryContext.montgomeryFactor);
    integerRelease(montgomeryContext.montgomeryRadix);
    montgomeryContext = {};
}

void modularProduct(const CoreInteger& a, const CoreInteger& b, const CoreInteger& modulus,
                    CoreInteger& result) {
    const CoreInteger& radix = *montgomeryContext.montgomeryRadix;
    const std::uint64_t radixBits = integerBitLength(radix) - 1;
    verify(!integerIsNegative(a) && !integerIsNegative(b) &&
           std::all_of(b.limbs.begin() + radixBits / limbBits, b.limbs.end(),
                       [](std::uint64_t limb) { return limb == 0; }));
    const IntegerTemporary product(integerAlloc(productBits));
    const IntegerTemporary form(integerAlloc(productBits));
    const IntegerTemporary t(integerAlloc(productBits));
    const IntegerTemporary u(integerAlloc(productBits));
    const IntegerTemporary v(integerAlloc(productBits));

    // The Montgomery form a * R mod m, by plain reduction.
    integerMultiply(a, radix, *product);
    integerModulo(*product, modulus, form.get());
    integerMultiply(*form, b, *t);

    // t + (t * F mod R) * m is a multiple of R, and its quotient lies below 2m.
    integerMultiply(*t, *montgomeryContext.montgomeryFactor, *u);
    integerTruncate(*u, radixBits);
    integerMultiply(*u, modulus, *v);
    integerAdd(*v, *t, *product);
    integerShiftRight(*product, radixBits);
    if (integerCompare(*product, modulus) < 0) {
        integerCopy(*product, result);
    } else {
        integerSubtract(*product, modulus, result);
    }
}

}  // namespace core
