#include "curve/fast/order.h"

#include <array>
#include <cstddef>
#include <type_traits>

#include "core/integer_magnitude.h"
#include "curve/sect163r2_values.h"

namespace core {

namespace {

constexpr Words163 n = load163(sect163r2Values::order);

/// a - b, and the borrow that is left.
constexpr Words163 subtract(const Words163& a, const Words163& b, std::uint64_t& borrow) {
    Words163 difference{};
    borrow = 0;
    for (std::size_t i = 0; i < words163; ++i) {
        const DoubleLimb limb = DoubleLimb{a[i]} - b[i] - borrow;
        difference[i] = static_cast<std::uint64_t>(limb);
        borrow = static_cast<std::uint64_t>(limb >> limbBits) & 1;
    }
    return difference;
}

/// b where the mask is all ones, a where it is zero.
constexpr Words163 select(const Words163& a, const Words163& b, std::uint64_t mask) {
    if (!std::is_constant_evaluated()) {
        // The compiler is not to learn that there are two cases, and to make a branch of them.
        __asm__("" : "+r"(mask));
    }
    Words163 chosen = a;
    for (std::size_t i = 0; i < words163; ++i) {
        chosen[i] ^= (a[i] ^ b[i]) & mask;
    }
    return chosen;
}

constexpr Words163 reduceByMask(const Words163& a) {
    std::uint64_t borrow = 0;
    const Words163 difference = subtract(a, n, borrow);
    return select(difference, a, 0 - borrow);
}

/// -1 / n modulo 2^64, by Newton's iteration: each step doubles the number of bits that are right,
/// and n itself is 1 / n in its lowest three.
consteval std::uint64_t negativeInverse() {
    std::uint64_t inverse = n[0];
    for (int i = 0; i < 5; ++i) {
        inverse *= 2 - n[0] * inverse;
    }
    return 0 - inverse;
}

/// 2^power mod n.
consteval Words163 powerOfTwo(unsigned power) {
    Words163 value = {1};
    for (unsigned i = 0; i < power; ++i) {
        value = reduceByMask(
            {value[0] << 1, value[1] << 1 | value[0] >> 63, value[2] << 1 | value[1] >> 63});
    }
    return value;
}

constexpr std::uint64_t montgomeryFactor = negativeInverse();
constexpr unsigned radixBits = words163 * limbBits;
constexpr Words163 radix = powerOfTwo(radixBits);
constexpr Words163 radixSquared = powerOfTwo(2 * radixBits);

static_assert(n[0] * montgomeryFactor + 1 == 0);

}  // namespace

std::uint64_t belowOrder(const Words163& a) {
    std::uint64_t borrow = 0;
    subtract(a, n, borrow);
    return 0 - borrow;
}

Words163 reduceOnce(const Words163& a) {
    return reduceByMask(a);
}

Words163 orderSum(const Words163& a, const Words163& b) {
    Words163 sum{};
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < words163; ++i) {
        const DoubleLimb limb = DoubleLimb{a[i]} + b[i] + carry;
        sum[i] = static_cast<std::uint64_t>(limb);
        carry = static_cast<std::uint64_t>(limb >> limbBits);
    }
    return reduceByMask(sum);
}

Words163 orderProduct(const Words163& a, const Words163& b) {
    // Montgomery's product, limb by limb of a. Behind each pass t is below 2n, for it was below
    // 2n before, and (2n + (2^64 - 1) * b + (2^64 - 1) * n) / 2^64 is below 2n for a b below n.
    Words163 t{};
    for (const std::uint64_t limb : a) {
        const std::uint64_t quotient = (t[0] + limb * b[0]) * montgomeryFactor;
        std::uint64_t carry = 0;
        std::uint64_t carryOfMultiple = 0;
        for (std::size_t i = 0; i < words163; ++i) {
            const DoubleLimb sum = DoubleLimb{limb} * b[i] + t[i] + carry;
            carry = static_cast<std::uint64_t>(sum >> limbBits);
            const DoubleLimb multiple =
                DoubleLimb{quotient} * n[i] + static_cast<std::uint64_t>(sum) + carryOfMultiple;
            carryOfMultiple = static_cast<std::uint64_t>(multiple >> limbBits);
            if (i != 0) {
                t[i - 1] = static_cast<std::uint64_t>(multiple);
            }
        }
        t[words163 - 1] = carry + carryOfMultiple;
    }
    return reduceByMask(t);
}

Words163 toOrderForm(const Words163& a) {
    return orderProduct(a, radixSquared);
}

Words163 orderInverse(const Words163& a) {
    // Fermat: 1 / a = a^(n - 2), by digits of four bits that are the same for every a.
    constexpr unsigned width = 4;
    constexpr unsigned digits = (degree163 + width - 1) / width;
    constexpr std::uint64_t digitMask = (1 << width) - 1;
    constexpr Words163 exponent = {n[0] - 2, n[1], n[2]};
    std::array<Words163, digitMask + 1> powers;  // by their exponents, from 1 on
    powers[1] = toOrderForm(a);
    for (std::size_t i = 2; i < powers.size(); ++i) {
        powers[i] = orderProduct(powers[i - 1], powers[1]);
    }
    Words163 power = radix;
    for (unsigned bit = digits * width; bit > 0;) {
        bit -= width;
        for (unsigned i = 0; i < width; ++i) {
            power = orderProduct(power, power);
        }
        const std::uint64_t digit = exponent[bit / limbBits] >> bit % limbBits & digitMask;
        if (digit != 0) {
            power = orderProduct(power, powers[digit]);
        }
    }
    return power;
}

}  // namespace core
