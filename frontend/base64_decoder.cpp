#include "frontend/base64_decoder.h"

#include <array>
#include <cstddef>

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t invalid = 255;
constexpr std::size_t groupSize = 4;
constexpr std::size_t bytesOfGroup = 3;
constexpr unsigned bitsOfCharacter = 6;

/// The six bits of each character; a zero byte has those of "A".
consteval std::array<std::uint8_t, 256> makeValueTable() {
    std::array<std::uint8_t, 256> table{};
    table.fill(invalid);
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        table[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::uint8_t>(i);
    }
    table[0] = 0;
    return table;
}

constexpr std::array<std::uint8_t, 256> valueTable = makeValueTable();

using Values = std::array<std::uint8_t, groupSize>;

std::uint8_t valueOf(char character) {
    return valueTable[static_cast<std::uint8_t>(character)];
}

/// The first six bits are the top ones of the first byte.
void storeGroup(const Values& values, std::uint8_t* bytes) {
    unsigned bits = 0;
    for (const std::uint8_t value : values) {
        bits = bits << bitsOfCharacter | value;
    }
    bytes[0] = static_cast<std::uint8_t>(bits >> 16);
    bytes[1] = static_cast<std::uint8_t>(bits >> 8);
    bytes[2] = static_cast<std::uint8_t>(bits);
}

Base64Decoding decodeLeadingGroups(std::string_view text, std::vector<std::uint8_t>& out) {
    if (text.empty()) {
        return {};
    }
    // One byte more than the groups hold.
    out.resize(text.size() / groupSize * bytesOfGroup + 1);
    std::uint8_t* bytes = out.data();
    for (std::size_t place = 0; place < text.size(); place += groupSize) {
        Values values;
        for (std::size_t i = 0; i < groupSize; ++i) {
            values[i] = valueOf(text[place + i]);
            if (values[i] == invalid) {
                return {
                    .fault = text[place + i] == '=' ? Base64Fault::padding : Base64Fault::character,
                    .place = place + i};
            }
        }
        storeGroup(values, bytes);
        bytes += bytesOfGroup;
    }
    return {};
}

Base64Decoding decodeFinalGroup(std::string_view group, std::vector<std::uint8_t>& out) {
    Values values{};
    std::size_t count = 0;
    for (const char character : group.substr(0, group.find('='))) {
        values[count] = valueOf(character);
        if (values[count] == invalid) {
            return {.fault = Base64Fault::character, .place = count};
        }
        ++count;
    }
    const std::size_t behind = group.find_first_not_of('=', count);
    if (behind != std::string_view::npos) {
        return {.fault = Base64Fault::padding, .place = behind};
    }
    std::array<std::uint8_t, bytesOfGroup> bytes;
    storeGroup(values, bytes.data());
    out.insert(out.end(), bytes.begin(),
               bytes.begin() + static_cast<std::ptrdiff_t>(count * bitsOfCharacter / 8));
    return {};
}

}  // namespace

Base64Decoding base64DecodeReporting(std::string_view text, std::vector<std::uint8_t>& out) {
    if (text.empty() || text.size() % groupSize != 0) {
        return {.fault = Base64Fault::length};
    }
    const std::size_t leading = text.size() - groupSize;
    Base64Decoding decoding = decodeLeadingGroups(text.substr(0, leading), out);
    if (decoding.fault == Base64Fault::none) {
        decoding = decodeFinalGroup(text.substr(leading), out);
        decoding.place += leading;
    }
    return decoding;
}

bool base64Decode(std::string_view text, std::vector<std::uint8_t>& out) {
    return base64DecodeReporting(text, out).fault == Base64Fault::none;
}
