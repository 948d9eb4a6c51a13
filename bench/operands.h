#pragma once

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/obj_mac.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "curve/field_element.h"

// The same values for both sides of a comparison, made by libcrypto's generator.

struct NumberReleaser {
    void operator()(BIGNUM* number) const { BN_free(number); }
    void operator()(BN_CTX* context) const { BN_CTX_free(context); }
    void operator()(EC_KEY* key) const { EC_KEY_free(key); }
};
using Number = std::unique_ptr<BIGNUM, NumberReleaser>;
using NumberContext = std::unique_ptr<BN_CTX, NumberReleaser>;
using KeyPair = std::unique_ptr<EC_KEY, NumberReleaser>;

inline constexpr int fieldBits = 163;
inline constexpr std::size_t fieldBytes = 48;

/// An odd, reduced element with its highest coefficient or without.
inline Number randomElement() {
    Number number(BN_new());
    BN_rand(number.get(), fieldBits, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ODD);
    return number;
}

inline core::FieldElement elementFrom(const BIGNUM* number) {
    core::FieldElement e{.degree = fieldBits, .capacity = fieldBytes};
    BN_bn2lebinpad(number, reinterpret_cast<unsigned char*>(e.words.data()), fieldBytes);
    return e;
}

/// Pairs of operands, enough of them that no branch can learn their bits.
struct OperandPairs {
    static constexpr std::size_t count = 64;
    std::vector<Number> numbers;
    std::vector<core::FieldElement> elements;

    OperandPairs() {
        for (std::size_t i = 0; i < 2 * count; ++i) {
            numbers.push_back(randomElement());
            elements.push_back(elementFrom(numbers.back().get()));
        }
    }
};
