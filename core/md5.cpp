#include <array>
#include <bit>
#include <cstddef>

#include "core/hash.h"
#include "core/hash_message.h"
#include "core/little_endian.h"
#include "core/unroll.h"

namespace core {

namespace {

// RFC 1321, section 3.3.
constexpr std::array<std::uint32_t, 4> initialState = {0x67452301, 0xEFCDAB89, 0x98BADCFE,
                                                       0x10325476};

// RFC 1321, section 3.4: the integer part of 2^32 times abs(sin(i)), i from 1 to 64 in radians.
constexpr std::array<std::uint32_t, 64> sineTable = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391,
};

// Rotations of the four rounds, each used in turn four times.
constexpr std::array<std::array<int, 4>, 4> rotations = {{
    {7, 12, 17, 22},
    {5, 9, 14, 20},
    {4, 11, 16, 23},
    {6, 10, 15, 21},
}};

/// F, G, H and I of RFC 1321. Choices between bits are written so that x, known last, is waited for
/// least: G is a sum, whose terms share no bit.
std::uint32_t mix(std::size_t round, std::uint32_t x, std::uint32_t y, std::uint32_t z) {
    switch (round) {
        case 0:
            return z ^ (x & (y ^ z));
        case 1:
            return (x & z) + (y & ~z);
        case 2:
            return x ^ y ^ z;
        default:
            return y ^ (x | ~z);
    }
}

/// Index of the message word of `step`, which counts the 64 steps of a block.
constexpr std::size_t wordIndex(std::size_t step) {
    switch (step / 16) {
        case 0:
            return step % 16;
        case 1:
            return (5 * step + 1) % 16;
        case 2:
            return (3 * step + 5) % 16;
        default:
            return 7 * step % 16;
    }
}

void runBlock(std::uint32_t* state, const std::uint8_t* block) {
    std::uint32_t a = state[0];
    std::uint32_t b = state[1];
    std::uint32_t c = state[2];
    std::uint32_t d = state[3];
    unroll<sineTable.size()>([&](auto step) __attribute__((always_inline)) {
        constexpr std::size_t round = step / 16;
        const std::uint32_t word = loadLittle32(block + 4 * wordIndex(step));
        const std::uint32_t sum = a + mix(round, b, c, d) + word + sineTable[step];
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, rotations[round][step % 4]);
    });
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
}

}  // namespace

void md5Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out) {
    std::array<std::uint32_t, 4> state = initialState;
    hashMessage(state.data(), data, length, runEachBlock<runBlock>, LengthOrder::littleEndian);
    for (std::size_t i = 0; i < state.size(); ++i) {
        storeLittle32(out + 4 * i, state[i]);
    }
}

}  // namespace core
