#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/hash.h"
#include "tests/support/random_operands.h"

// Second forms of the hashes, of which every constant is worked out anew from its published
// definition: a wrong digit in a table of the core cannot stand here as well.

namespace {

std::vector<std::uint32_t> firstPrimes(std::size_t count) {
    std::vector<std::uint32_t> primes;
    for (std::uint32_t n = 2; primes.size() < count; ++n) {
        bool prime = true;
        for (const std::uint32_t p : primes) {
            prime = prime && n % p != 0;
        }
        if (prime) {
            primes.push_back(n);
        }
    }
    return primes;
}

/// The first 32 bits behind the point.
std::uint32_t fraction(long double value) {
    return static_cast<std::uint32_t>((value - std::floor(value)) * 0x1p32L);
}

Bytes paddedMessage(Bytes message, bool bigEndian) {
    const std::uint64_t bits = message.size() * 8;
    message.push_back(0x80);
    while (message.size() % 64 != 56) {
        message.push_back(0);
    }
    for (unsigned i = 0; i < 8; ++i) {
        message.push_back(static_cast<std::uint8_t>(bits >> 8 * (bigEndian ? 7 - i : i)));
    }
    return message;
}

std::uint32_t wordAt(const Bytes& bytes, std::size_t place, bool bigEndian) {
    std::uint32_t word = 0;
    for (unsigned i = 0; i < 4; ++i) {
        word |= std::uint32_t{bytes.at(place + i)} << 8 * (bigEndian ? 3 - i : i);
    }
    return word;
}

template <std::size_t words>
Bytes littleEndian(const std::array<std::uint32_t, words>& state) {
    Bytes bytes;
    for (const std::uint32_t word : state) {
        for (unsigned i = 0; i < 4; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(word >> 8 * i));
        }
    }
    return bytes;
}

/// FIPS 180-4, sections 5.3.3, 4.2.2 and 6.2.2; the words stand little-endian.
Bytes rebuiltSha256(const Bytes& message) {
    const std::vector<std::uint32_t> primes = firstPrimes(64);
    std::array<std::uint32_t, 8> h;
    for (std::size_t i = 0; i < 8; ++i) {
        h[i] = fraction(std::sqrt(static_cast<long double>(primes[i])));
    }
    const Bytes padded = paddedMessage(message, true);
    for (std::size_t block = 0; block < padded.size(); block += 64) {
        std::array<std::uint32_t, 64> w;
        for (std::size_t t = 0; t < 64; ++t) {
            if (t < 16) {
                w[t] = wordAt(padded, block + 4 * t, true);
                continue;
            }
            const std::uint32_t x = w[t - 15];
            const std::uint32_t y = w[t - 2];
            w[t] = w[t - 16] + w[t - 7] + (std::rotr(x, 7) ^ std::rotr(x, 18) ^ (x >> 3)) +
                   (std::rotr(y, 17) ^ std::rotr(y, 19) ^ (y >> 10));
        }
        std::array<std::uint32_t, 8> v = h;
        for (std::size_t t = 0; t < 64; ++t) {
            const std::uint32_t k = fraction(std::cbrt(static_cast<long double>(primes[t])));
            const std::uint32_t chosen = (v[4] & v[5]) | (~v[4] & v[6]);
            const std::uint32_t most = (v[0] & v[1]) | (v[0] & v[2]) | (v[1] & v[2]);
            const std::uint32_t t1 =
                v[7] + (std::rotr(v[4], 6) ^ std::rotr(v[4], 11) ^ std::rotr(v[4], 25)) + chosen +
                k + w[t];
            const std::uint32_t t2 =
                (std::rotr(v[0], 2) ^ std::rotr(v[0], 13) ^ std::rotr(v[0], 22)) + most;
            v = {t1 + t2, v[0], v[1], v[2], v[3] + t1, v[4], v[5], v[6]};
        }
        for (std::size_t i = 0; i < 8; ++i) {
            h[i] += v[i];
        }
    }
    return littleEndian(h);
}

/// The words 0123456789abcdef and fedcba9876543210 of RFC 1321 as bytes, and what follows them in
/// RIPEMD-160.
constexpr std::array<std::uint32_t, 5> countingState = {0x67452301, 0xefcdab89, 0x98badcfe,
                                                        0x10325476, 0xc3d2e1f0};

/// RFC 1321, section 3.4.
Bytes rebuiltMd5(const Bytes& message) {
    constexpr std::array<std::array<int, 4>, 4> shifts = {
        {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}}};
    // The first word of each round, and the step from word to word.
    constexpr std::array<std::size_t, 4> firstWord = {0, 1, 5, 0};
    constexpr std::array<std::size_t, 4> wordStep = {1, 5, 3, 7};
    std::array<std::uint32_t, 4> h;
    std::copy_n(countingState.begin(), 4, h.begin());
    const Bytes padded = paddedMessage(message, false);
    for (std::size_t block = 0; block < padded.size(); block += 64) {
        std::array<std::uint32_t, 4> v = h;
        for (std::size_t i = 0; i < 64; ++i) {
            const std::size_t round = i / 16;
            const std::array<std::uint32_t, 4> functions = {
                (v[1] & v[2]) | (~v[1] & v[3]),
                (v[1] & v[3]) | (v[2] & ~v[3]),
                v[1] ^ v[2] ^ v[3],
                v[2] ^ (v[1] | ~v[3]),
            };
            const auto sine = static_cast<std::uint32_t>(
                std::floor(std::fabs(std::sin(static_cast<long double>(i + 1))) * 0x1p32L));
            const std::size_t word = (firstWord[round] + i % 16 * wordStep[round]) % 16;
            const std::uint32_t sum =
                v[0] + functions[round] + wordAt(padded, block + 4 * word, false) + sine;
            v = {v[3], v[1] + std::rotl(sum, shifts[round][i % 4]), v[1], v[2]};
        }
        for (std::size_t i = 0; i < 4; ++i) {
            h[i] += v[i];
        }
    }
    return littleEndian(h);
}

/// The paper's permutations rho and pi, its shifts by message word, and its constants as integer
/// parts of 2^30 times square and cube roots of the first primes.
class RipemdLine {
public:
    explicit RipemdLine(bool parallel) : parallel_(parallel) {}

    std::uint32_t constant(std::size_t round) const {
        const std::size_t index = parallel_ ? (round + 1) % 5 : round;
        if (index == 0) {
            return 0;
        }
        const auto prime = static_cast<long double>(firstPrimes(4)[index - 1]);
        return static_cast<std::uint32_t>(
            std::floor((parallel_ ? std::cbrt(prime) : std::sqrt(prime)) * 0x1p30L));
    }

    std::size_t word(std::size_t round, std::size_t step) const {
        constexpr std::array<std::size_t, 16> rho = {7,  4, 13, 1, 10, 6,  15, 3,
                                                     12, 0, 9,  5, 2,  14, 11, 8};
        std::size_t index = parallel_ ? (9 * step + 5) % 16 : step;
        for (std::size_t i = 0; i < round; ++i) {
            index = rho[index];
        }
        return index;
    }

    static int shift(std::size_t round, std::size_t word) {
        constexpr std::array<std::array<int, 16>, 5> shifts = {{
            {11, 14, 15, 12, 5, 8, 7, 9, 11, 13, 14, 15, 6, 7, 9, 8},
            {12, 13, 11, 15, 6, 9, 9, 7, 12, 15, 11, 13, 7, 8, 7, 7},
            {13, 15, 14, 11, 7, 7, 6, 8, 13, 14, 13, 12, 5, 5, 6, 9},
            {14, 11, 12, 14, 8, 6, 5, 5, 15, 12, 15, 14, 9, 9, 8, 6},
            {15, 12, 13, 13, 9, 5, 8, 6, 14, 11, 12, 11, 8, 6, 5, 5},
        }};
        return shifts[round][word];
    }

    static std::uint32_t function(std::size_t index, std::uint32_t x, std::uint32_t y,
                                  std::uint32_t z) {
        const std::array<std::uint32_t, 5> values = {
            x ^ y ^ z, (x & y) | (~x & z), (x | ~y) ^ z, (x & z) | (y & ~z), x ^ (y | ~z),
        };
        return values[index];
    }

    std::array<std::uint32_t, 5> run(std::array<std::uint32_t, 5> v, const Bytes& padded,
                                     std::size_t block) const {
        for (std::size_t j = 0; j < 80; ++j) {
            const std::size_t round = j / 16;
            const std::size_t index = word(round, j % 16);
            const std::uint32_t sum = v[0] +
                                      function(parallel_ ? 4 - round : round, v[1], v[2], v[3]) +
                                      wordAt(padded, block + 4 * index, false) + constant(round);
            v = {v[4], std::rotl(sum, shift(round, index)) + v[4], v[1], std::rotl(v[2], 10), v[3]};
        }
        return v;
    }

private:
    bool parallel_;
};

Bytes rebuiltRipemd160(const Bytes& message) {
    std::array<std::uint32_t, 5> h = countingState;
    const Bytes padded = paddedMessage(message, false);
    for (std::size_t block = 0; block < padded.size(); block += 64) {
        const std::array<std::uint32_t, 5> left = RipemdLine(false).run(h, padded, block);
        const std::array<std::uint32_t, 5> right = RipemdLine(true).run(h, padded, block);
        std::array<std::uint32_t, 5> next;
        for (std::size_t i = 0; i < 5; ++i) {
            next[i] = h[(i + 1) % 5] + left[(i + 2) % 5] + right[(i + 3) % 5];
        }
        h = next;
    }
    return littleEndian(h);
}

template <std::size_t size>
void expectRebuilt(void (*digest)(const std::uint8_t*, std::uint64_t, std::uint8_t*),
                   Bytes (*rebuilt)(const Bytes&)) {
    for (std::size_t length = 0; length <= 300; ++length) {
        const Bytes message = randomBytes(length);
        Bytes out(size);
        digest(message.data(), message.size(), out.data());
        EXPECT_EQ(out, rebuilt(message)) << "length " << length;
    }
}

TEST(Sha256Digest, HasTheConstantsOfTheRootsOfPrimes) {
    expectRebuilt<32>(core::sha256Digest, rebuiltSha256);
}

TEST(Ripemd160Digest, HasTheConstantsOfRootsAndPermutations) {
    expectRebuilt<20>(core::ripemd160Digest, rebuiltRipemd160);
}

TEST(Md5Digest, HasTheConstantsOfTheSines) {
    expectRebuilt<16>(core::md5Digest, rebuiltMd5);
}

}  // namespace
