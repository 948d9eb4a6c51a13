#include "tests/support/big_number.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace {

/// Passes on what libcrypto made, unless it made nothing.
template <typename T>
T made(T result) {
    if (!result) {
        throw std::runtime_error("libcrypto refused a number");
    }
    return result;
}

}  // namespace

BN_CTX* numberContext() {
    static const std::unique_ptr<BN_CTX, decltype(&BN_CTX_free)> kept(BN_CTX_new(), &BN_CTX_free);
    return made(kept.get());
}

BigNumber::BigNumber(std::uint64_t value) : number_(made(BN_new())) {
    made(BN_set_word(get(), value));
}

BigNumber::BigNumber(const BigNumber& other) : number_(made(BN_dup(other.get()))) {}

BigNumber& BigNumber::operator=(const BigNumber& other) {
    return *this = BigNumber(other);
}

BigNumber BigNumber::fromHexadecimal(const std::string& digits) {
    BigNumber result;
    BIGNUM* number = result.get();
    if (BN_hex2bn(&number, digits.c_str()) != static_cast<int>(digits.size())) {
        throw std::runtime_error("no number: " + digits);
    }
    return result;
}

BigNumber BigNumber::fromLimbs(const std::vector<std::uint64_t>& limbs) {
    std::vector<std::uint8_t> bytes(limbs.size() * sizeof(std::uint64_t));
    std::copy_n(reinterpret_cast<const std::uint8_t*>(limbs.data()), bytes.size(), bytes.begin());
    return fromBytes(bytes);
}

BigNumber BigNumber::fromBytes(const std::vector<std::uint8_t>& bytes) {
    BigNumber result;
    made(BN_lebin2bn(bytes.data(), static_cast<int>(bytes.size()), result.get()));
    return result;
}

BigNumber BigNumber::fromInteger(const core::CoreInteger& value) {
    const std::uint64_t* limbs = value.limbs.data();
    BigNumber result = fromLimbs({limbs, limbs + (value.lengthAndSign & ~core::integerSignBit)});
    BN_set_negative(result.get(), (value.lengthAndSign & core::integerSignBit) != 0 ? 1 : 0);
    return result;
}

BigNumber BigNumber::powerOfTwo(std::uint64_t exponent) {
    return BigNumber(1) << exponent;
}

core::CoreInteger BigNumber::toInteger(std::uint32_t capacity) const {
    const std::vector<std::uint8_t> bytes = toBytes();
    const std::size_t limbCount = (bytes.size() + 7) / 8;
    if (limbCount > capacity || capacity > core::integerLimbRoom) {
        throw std::runtime_error("no room for " + toHexadecimal());
    }
    core::CoreInteger value;
    value.lengthAndSign =
        static_cast<std::uint32_t>(limbCount) | (isNegative() ? core::integerSignBit : 0);
    value.capacity = capacity;
    if (!bytes.empty()) {
        std::memcpy(value.limbs.data(), bytes.data(), bytes.size());
    }
    return value;
}

std::vector<std::uint8_t> BigNumber::toBytes(std::size_t size) const {
    const auto needed = static_cast<std::size_t>(BN_num_bytes(get()));
    std::vector<std::uint8_t> bytes(std::max(needed, size));
    const int written = BN_bn2lebinpad(get(), bytes.data(), static_cast<int>(bytes.size()));
    if (written < 0) {
        throw std::runtime_error("libcrypto gave no bytes");
    }
    return bytes;
}

std::string BigNumber::toHexadecimal() const {
    char* digits = made(BN_bn2hex(get()));
    std::string text = digits;
    OPENSSL_free(digits);
    return text;
}

std::uint64_t BigNumber::bitLength() const {
    return static_cast<std::uint64_t>(BN_num_bits(get()));
}

bool BigNumber::isNegative() const {
    return BN_is_negative(get()) != 0;
}

bool BigNumber::isZero() const {
    return BN_is_zero(get()) != 0;
}

bool BigNumber::isOdd() const {
    return BN_is_odd(get()) != 0;
}

BigNumber BigNumber::inverseModulo(const BigNumber& modulus) const {
    BigNumber result;
    BigNumber divisor;
    made(BN_gcd(divisor.get(), get(), modulus.get(), numberContext()));
    if (divisor == BigNumber(1)) {
        made(BN_mod_inverse(result.get(), get(), modulus.get(), numberContext()));
    }
    return result;
}

BigNumber BigNumber::operator-() const {
    BigNumber result(*this);
    BN_set_negative(result.get(), isNegative() ? 0 : 1);
    return result;
}

BigNumber operator+(const BigNumber& a, const BigNumber& b) {
    BigNumber result;
    made(BN_add(result.get(), a.get(), b.get()));
    return result;
}

BigNumber operator-(const BigNumber& a, const BigNumber& b) {
    BigNumber result;
    made(BN_sub(result.get(), a.get(), b.get()));
    return result;
}

BigNumber operator*(const BigNumber& a, const BigNumber& b) {
    BigNumber result;
    made(BN_mul(result.get(), a.get(), b.get(), numberContext()));
    return result;
}

BigNumber operator/(const BigNumber& a, const BigNumber& b) {
    BigNumber result;
    made(BN_div(result.get(), nullptr, a.get(), b.get(), numberContext()));
    return result;
}

BigNumber operator%(const BigNumber& a, const BigNumber& b) {
    BigNumber result;
    made(BN_div(nullptr, result.get(), a.get(), b.get(), numberContext()));
    return result;
}

BigNumber operator<<(const BigNumber& value, std::uint64_t count) {
    BigNumber result;
    made(BN_lshift(result.get(), value.get(), static_cast<int>(count)));
    return result;
}

BigNumber operator>>(const BigNumber& value, std::uint64_t count) {
    BigNumber result;
    made(BN_rshift(result.get(), value.get(), static_cast<int>(count)));
    return result;
}

bool operator==(const BigNumber& a, const BigNumber& b) {
    return BN_cmp(a.get(), b.get()) == 0;
}

std::strong_ordering operator<=>(const BigNumber& a, const BigNumber& b) {
    return BN_cmp(a.get(), b.get()) <=> 0;
}

std::ostream& operator<<(std::ostream& stream, const BigNumber& value) {
    return stream << value.toHexadecimal();
}
