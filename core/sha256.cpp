#include <array>
#include <bit>
#include <cstddef>

#include "core/hash.h"
#include "core/hash_message.h"
#include "core/little_endian.h"
#include "core/unroll.h"

namespace core {

namespace {

// FIPS 180-4, section 5.3.3: fractions of the square roots of the first eight primes.
constexpr std::array<std::uint32_t, 8> initialState = {
    0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A, 0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19,
};

// FIPS 180-4, section 4.2.2: fractions of the cube roots of the first sixty-four primes.
constexpr std::array<std::uint32_t, 64> roundConstants = {
    0x428A2F98, 0x71374491, 0xB5C0FBCF, 0xE9B5DBA5, 0x3956C25B, 0x59F111F1, 0x923F82A4, 0xAB1C5ED5,
    0xD807AA98, 0x12835B01, 0x243185BE, 0x550C7DC3, 0x72BE5D74, 0x80DEB1FE, 0x9BDC06A7, 0xC19BF174,
    0xE49B69C1, 0xEFBE4786, 0x0FC19DC6, 0x240CA1CC, 0x2DE92C6F, 0x4A7484AA, 0x5CB0A9DC, 0x76F988DA,
    0x983E5152, 0xA831C66D, 0xB00327C8, 0xBF597FC7, 0xC6E00BF3, 0xD5A79147, 0x06CA6351, 0x14292967,
    0x27B70A85, 0x2E1B2138, 0x4D2C6DFC, 0x53380D13, 0x650A7354, 0x766A0ABB, 0x81C2C92E, 0x92722C85,
    0xA2BFE8A1, 0xA81A664B, 0xC24B8B70, 0xC76C51A3, 0xD192E819, 0xD6990624, 0xF40E3585, 0x106AA070,
    0x19A4C116, 0x1E376C08, 0x2748774C, 0x34B0BCB5, 0x391C0CB3, 0x4ED8AA4A, 0x5B9CCA4F, 0x682E6FF3,
    0x748F82EE, 0x78A5636F, 0x84C87814, 0x8CC70208, 0x90BEFFFA, 0xA4506CEB, 0xBEF9A3F7, 0xC67178F2,
};

std::uint32_t loadBig32(const std::uint8_t* bytes) {
    return __builtin_bswap32(loadLittle32(bytes));
}

// The functions of FIPS 180-4, section 4.1.2, as equal terms of fewer instructions: rotations are
// nested, since each of a value that is still needed takes a copy of it.

std::uint32_t choose(std::uint32_t x, std::uint32_t y, std::uint32_t z) {
    return z ^ (x & (y ^ z));
}

std::uint32_t majority(std::uint32_t x, std::uint32_t y, std::uint32_t z) {
    return y ^ ((x ^ y) & (y ^ z));
}

std::uint32_t bigSigma0(std::uint32_t x) {
    return std::rotr(x ^ std::rotr(x ^ std::rotr(x, 9), 11), 2);
}

std::uint32_t bigSigma1(std::uint32_t x) {
    return std::rotr(x ^ std::rotr(x ^ std::rotr(x, 14), 5), 6);
}

std::uint32_t smallSigma0(std::uint32_t x) {
    return std::rotr(x ^ std::rotr(x, 11), 7) ^ x >> 3;
}

std::uint32_t smallSigma1(std::uint32_t x) {
    return std::rotr(x ^ std::rotr(x, 2), 17) ^ x >> 10;
}

void runBlock(std::uint32_t* state, const std::uint8_t* block) {
    // The message schedule, of which the last sixteen words are at hand.
    constexpr std::size_t blockWords = 16;
    std::array<std::uint32_t, blockWords> w;

    std::uint32_t a = state[0];
    std::uint32_t b = state[1];
    std::uint32_t c = state[2];
    std::uint32_t d = state[3];
    std::uint32_t e = state[4];
    std::uint32_t f = state[5];
    std::uint32_t g = state[6];
    std::uint32_t h = state[7];
    unroll<roundConstants.size()>([&](auto t) __attribute__((always_inline)) {
        std::uint32_t& word = w[t % blockWords];
        if constexpr (t < blockWords) {
            word = loadBig32(block + 4 * t);
        } else {
            word += smallSigma1(w[(t - 2) % blockWords]) + w[(t - 7) % blockWords] +
                    smallSigma0(w[(t - 15) % blockWords]);
        }
        const std::uint32_t t1 = h + bigSigma1(e) + choose(e, f, g) + roundConstants[t] + word;
        const std::uint32_t t2 = bigSigma0(a) + majority(a, b, c);
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    });
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
    state[4] += e;
    state[5] += f;
    state[6] += g;
    state[7] += h;
}

}  // namespace

void sha256Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out) {
    std::array<std::uint32_t, 8> state = initialState;
    hashMessage(state.data(), data, length, runEachBlock<runBlock>, LengthOrder::bigEndian);
    for (std::size_t i = 0; i < state.size(); ++i) {
        storeLittle32(out + 4 * i, state[i]);
    }
}

}  // namespace core
