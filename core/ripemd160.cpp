#include <array>
#include <bit>
#include <cstddef>

#include "core/hash.h"
#include "core/hash_message.h"
#include "core/little_endian.h"
#include "core/unroll.h"

namespace core {

namespace {

constexpr std::size_t rounds = 5;
constexpr std::size_t stepsInRound = 16;

// The tables of H. Dobbertin, A. Bosselaers, B. Preneel: RIPEMD-160, a strengthened version of
// RIPEMD (1996), appendix A; one row for each round.
constexpr std::array<std::uint32_t, 5> initialState = {0x67452301, 0xEFCDAB89, 0x98BADCFE,
                                                       0x10325476, 0xC3D2E1F0};

template <typename T>
using RoundTable = std::array<std::array<T, stepsInRound>, rounds>;

/// One of the two lines of the compression function.
struct Line {
    RoundTable<std::uint8_t> words;  ///< message word of each step
    RoundTable<int> rotations;
    std::array<std::uint32_t, rounds> constants;
};

constexpr Line left = {
    .words = {{
        {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
        {7, 4, 13, 1, 10, 6, 15, 3, 12, 0, 9, 5, 2, 14, 11, 8},
        {3, 10, 14, 4, 9, 15, 8, 1, 2, 7, 0, 6, 13, 11, 5, 12},
        {1, 9, 11, 10, 0, 8, 12, 4, 13, 3, 7, 15, 14, 5, 6, 2},
        {4, 0, 5, 9, 7, 12, 2, 10, 14, 1, 3, 8, 11, 6, 15, 13},
    }},
    .rotations = {{
        {11, 14, 15, 12, 5, 8, 7, 9, 11, 13, 14, 15, 6, 7, 9, 8},
        {7, 6, 8, 13, 11, 9, 7, 15, 7, 12, 15, 9, 11, 7, 13, 12},
        {11, 13, 6, 7, 14, 9, 13, 15, 14, 8, 13, 6, 5, 12, 7, 5},
        {11, 12, 14, 15, 14, 15, 9, 8, 9, 14, 5, 6, 8, 6, 5, 12},
        {9, 15, 5, 11, 6, 8, 13, 12, 5, 12, 13, 14, 11, 8, 5, 6},
    }},
    .constants = {0x00000000, 0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xA953FD4E},
};

constexpr Line right = {
    .words = {{
        {5, 14, 7, 0, 9, 2, 11, 4, 13, 6, 15, 8, 1, 10, 3, 12},
        {6, 11, 3, 7, 0, 13, 5, 10, 14, 15, 8, 12, 4, 9, 1, 2},
        {15, 5, 1, 3, 7, 14, 6, 9, 11, 8, 12, 2, 10, 0, 4, 13},
        {8, 6, 4, 1, 3, 11, 15, 0, 5, 12, 2, 13, 9, 7, 10, 14},
        {12, 15, 10, 4, 1, 5, 8, 7, 6, 2, 13, 14, 0, 3, 9, 11},
    }},
    .rotations = {{
        {8, 9, 9, 11, 13, 15, 15, 5, 7, 7, 8, 11, 14, 14, 12, 6},
        {9, 13, 15, 7, 12, 8, 9, 11, 7, 7, 12, 7, 6, 15, 13, 11},
        {9, 7, 15, 11, 8, 6, 6, 14, 12, 13, 5, 14, 13, 13, 7, 5},
        {15, 5, 8, 11, 14, 14, 6, 14, 6, 9, 12, 9, 12, 5, 15, 8},
        {8, 5, 12, 9, 12, 5, 14, 6, 8, 13, 6, 5, 15, 13, 11, 11},
    }},
    .constants = {0x50A28BE6, 0x5C4DD124, 0x6D703EF3, 0x7A6D76E9, 0x00000000},
};

/// f1 to f5 of the paper, `index` from 0. Choices between bits are written so that x, known last,
/// is waited for least: f4 is a sum, whose terms share no bit.
std::uint32_t mix(std::size_t index, std::uint32_t x, std::uint32_t y, std::uint32_t z) {
    switch (index) {
        case 0:
            return x ^ y ^ z;
        case 1:
            return z ^ (x & (y ^ z));
        case 2:
            return (x | ~y) ^ z;
        case 3:
            return (x & z) + (y & ~z);
        default:
            return x ^ (y | ~z);
    }
}

struct Chain {
    std::uint32_t a, b, c, d, e;
};

void step(Chain& v, std::uint32_t addend, int rotation) {
    const std::uint32_t t = std::rotl(v.a + addend, rotation) + v.e;
    v.a = v.e;
    v.e = v.d;
    v.d = std::rotl(v.c, 10);
    v.c = v.b;
    v.b = t;
}

void runBlock(std::uint32_t* state, const std::uint8_t* block) {
    std::array<std::uint32_t, stepsInRound> words;
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = loadLittle32(block + 4 * i);
    }

    Chain l{state[0], state[1], state[2], state[3], state[4]};
    Chain r = l;
    unroll<rounds * stepsInRound>([&](auto index) __attribute__((always_inline)) {
        constexpr std::size_t round = index / stepsInRound;
        constexpr std::size_t i = index % stepsInRound;
        step(l, mix(round, l.b, l.c, l.d) + words[left.words[round][i]] + left.constants[round],
             left.rotations[round][i]);
        // The right line takes the five functions in the opposite order.
        step(r,
             mix(rounds - 1 - round, r.b, r.c, r.d) + words[right.words[round][i]] +
                 right.constants[round],
             right.rotations[round][i]);
    });

    const std::uint32_t t = state[1] + l.c + r.d;
    state[1] = state[2] + l.d + r.e;
    state[2] = state[3] + l.e + r.a;
    state[3] = state[4] + l.a + r.b;
    state[4] = state[0] + l.b + r.c;
    state[0] = t;
}

}  // namespace

void ripemd160Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out) {
    std::array<std::uint32_t, 5> state = initialState;
    hashMessage(state.data(), data, length, runEachBlock<runBlock>, LengthOrder::littleEndian);
    for (std::size_t i = 0; i < state.size(); ++i) {
        storeLittle32(out + 4 * i, state[i]);
    }
}

}  // namespace core
