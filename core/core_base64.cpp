#include "core/core_base64.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "core/little_endian.h"

namespace core {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char padding = '=';

consteval std::array<std::uint8_t, 256> makeDecodingTable() {
    std::array<std::uint8_t, 256> table{};
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        table[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return table;
}

constexpr std::array<std::uint8_t, 256> decodingTable = makeDecodingTable();

}  // namespace

std::uint64_t coreBase64Encode(const std::uint8_t* input, std::uint64_t length, char* output) {
    const char* start = output;
    while (length >= 3) {
        const std::uint32_t group = loadLittle32(input);
        for (unsigned i = 0; i < 4; ++i) {
            *output++ = alphabet[group >> 6 * i & 63];
        }
        input += 3;
        length -= 3;
    }
    if (length != 0) {
        const std::uint32_t group = loadLittle32(input);
        for (unsigned i = 0; i < 4; ++i) {
            *output++ = i <= length ? alphabet[group >> 6 * i & 63] : padding;
        }
    }
    return static_cast<std::uint64_t>(output - start);
}

std::uint64_t coreBase64Decode(const char* input, std::uint64_t length, std::uint8_t* output) {
    if (length % 4 != 0) {
        return 0;
    }
    std::uint64_t count = 0;
    for (std::uint64_t position = 0; position < length; position += 4) {
        std::uint32_t group = 0;
        for (unsigned i = 0; i < 4; ++i) {
            const char character = input[position + i];
            group |= std::uint32_t{decodingTable[static_cast<std::uint8_t>(character)]} << 6 * i;
            count -= character == padding ? 1 : 0;
        }
        storeLittle32(output, group);
        output += 3;
        count += 3;
    }
    return count;
}

}  // namespace core
