#pragma once

#include <openssl/bn.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "core/core_integer.h"

/// What libcrypto needs for its own steps; one for all.
BN_CTX* numberContext();

/// A signed number of any size, as libcrypto holds it and reckons with it: the judge of the core's
/// integers. What libcrypto refuses throws std::runtime_error.
class BigNumber {
public:
    BigNumber(std::uint64_t value = 0);
    BigNumber(const BigNumber& other);
    BigNumber(BigNumber&&) noexcept = default;
    BigNumber& operator=(const BigNumber& other);
    BigNumber& operator=(BigNumber&&) noexcept = default;
    ~BigNumber() = default;

    /// Digits with an optional "-" in front.
    static BigNumber fromHexadecimal(const std::string& digits);

    /// Limbs from the least significant on.
    static BigNumber fromLimbs(const std::vector<std::uint64_t>& limbs);

    /// Bytes from the least significant on.
    static BigNumber fromBytes(const std::vector<std::uint8_t>& bytes);

    static BigNumber fromInteger(const core::CoreInteger& value);

    static BigNumber powerOfTwo(std::uint64_t exponent);

    /// The normal integer of this value, with so much capacity. Throws when the value needs more
    /// limbs than `capacity`.
    core::CoreInteger toInteger(std::uint32_t capacity = core::integerLimbRoom) const;

    /// Bytes of the magnitude, least significant first, padded with zero to at least `size`.
    std::vector<std::uint8_t> toBytes(std::size_t size = 0) const;

    std::string toHexadecimal() const;

    /// Bits of the magnitude.
    std::uint64_t bitLength() const;

    bool isNegative() const;
    bool isZero() const;
    bool isOdd() const;

    /// The inverse modulo `modulus`; zero when there is none.
    BigNumber inverseModulo(const BigNumber& modulus) const;

    // For libcrypto's functions.
    BIGNUM* get() { return number_.get(); }
    const BIGNUM* get() const { return number_.get(); }

    BigNumber operator-() const;
    friend BigNumber operator+(const BigNumber& a, const BigNumber& b);
    friend BigNumber operator-(const BigNumber& a, const BigNumber& b);
    friend BigNumber operator*(const BigNumber& a, const BigNumber& b);
    /// Truncates toward zero.
    friend BigNumber operator/(const BigNumber& a, const BigNumber& b);
    /// The remainder of the truncated quotient: it has the sign of a.
    friend BigNumber operator%(const BigNumber& a, const BigNumber& b);
    friend BigNumber operator<<(const BigNumber& value, std::uint64_t count);
    /// Shifts the magnitude; the sign stays.
    friend BigNumber operator>>(const BigNumber& value, std::uint64_t count);
    friend bool operator==(const BigNumber& a, const BigNumber& b);
    friend std::strong_ordering operator<=>(const BigNumber& a, const BigNumber& b);

private:
    struct Releaser {
        void operator()(BIGNUM* number) const { BN_free(number); }
    };
    std::unique_ptr<BIGNUM, Releaser> number_;
};

/// For the messages of failed comparisons.
std::ostream& operator<<(std::ostream& stream, const BigNumber& value);
