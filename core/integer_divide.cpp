#include <algorithm>
#include <array>
#include <bit>

#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "core/verify.h"

namespace core {

namespace {

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

/// value := the magnitude, without a sign.
void store(const Limbs& magnitude, CoreInteger& value) {
    const std::uint32_t used = std::max(integerLimbCount(value), magnitude.count);
    std::fill_n(value.limbs.begin(), used, 0);
    std::copy_n(magnitude.limbs.begin(), magnitude.count, value.limbs.begin());
    value.lengthAndSign = 0;
    integerTrim(value, magnitude.count);
}

std::uint64_t bitLength(const Limbs& value) {
    std::uint32_t limbs = value.count;
    while (limbs > 0 && value.limbs[limbs - 1] == 0) {
        --limbs;
    }
    if (limbs == 0) {
        return 0;
    }
    return limbBits * (limbs - 1) + static_cast<unsigned>(std::bit_width(value.limbs[limbs - 1]));
}

/// remainder := remainder mod divisor; the bits of the quotient are added to `quotient`, if that is
/// not null. Long division, one bit at a time; a divisor of zero changes nothing.
///
/// Before the step of place i the remainder is below 2 * divisor * 2^i: at the first, because the
/// highest bits of both stand at one place there. A subtraction, where it is due, brings it below
/// divisor * 2^i, which is 2 * divisor * 2^(i-1). So behind place 0 it is below the divisor.
void divide(Limbs& remainder, const CoreInteger& divisor, CoreInteger* quotient) {
    Limbs shifted(divisor, std::max(remainder.count, integerLimbCount(divisor)));
    const std::uint64_t divisorBits = bitLength(shifted);
    const std::uint64_t remainderBits = bitLength(remainder);
    if (divisorBits == 0 || divisorBits > remainderBits) {
        return;
    }
    shiftLeft(shifted, remainderBits - divisorBits);
    for (std::uint64_t place = remainderBits - divisorBits + 1; place-- > 0;) {
        if (!isBelow(remainder, shifted)) {
            subtract(remainder, shifted);
            if (quotient != nullptr) {
                quotient->limbs[place / limbBits] |= std::uint64_t{1} << place % limbBits;
            }
        }
        shiftRightOne(shifted);
    }
}

}  // namespace

void integerDivide(const CoreInteger& a, const CoreInteger& b, CoreInteger& quotient) {
    verify(integerIsSound(a) && integerIsSound(b) && &quotient != &a && &quotient != &b);
    integerClear(quotient);
    const std::int64_t order = integerCompare(a, b);
    if (order == 0) {
        integerCopy(integerOne, quotient);
        return;
    }
    if (order < 0) {
        return;
    }
    const std::uint32_t limbs = integerLimbCount(a);
    std::fill_n(quotient.limbs.begin(), limbs, 0);
    Limbs remainder(a, limbs);
    divide(remainder, b, &quotient);
    integerTrim(quotient, limbs);
    if (integerIsNegative(a) != integerIsNegative(b)) {
        integerMarkNegative(quotient);
    }
}

void integerModulo(CoreInteger& a, const CoreInteger& modulus, CoreInteger* result) {
    verify(integerIsSound(a) && integerIsSound(modulus) && &a != &modulus && result != &modulus);
    CoreInteger& remainder = result != nullptr ? *result : a;
    if (integerIsZero(a)) {
        integerClear(remainder);
        return;
    }
    if (integerIsZero(modulus)) {
        return;
    }
    const std::int64_t order = integerCompare(a, modulus);
    if (order == 0) {
        integerClear(remainder);
        return;
    }
    if (order > 0) {
        Limbs value(a, integerLimbCount(a));
        divide(value, modulus, nullptr);
        if (integerBitLength(a) == integerBitLength(modulus)) {
            store(value, a);
        }
        store(value, remainder);
        return;
    }
    if (&remainder != &a) {
        integerCopy(a, remainder);
    }
}

}  // namespace core
