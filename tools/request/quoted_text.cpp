#include "tools/request/quoted_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

constexpr std::size_t longestQuotation = 60;

void appendEscape(std::string& result, char character) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto byte = static_cast<std::uint8_t>(character);
    result.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 0xF]);
}

}  // namespace

std::string quotation(std::string_view text) {
    const bool cut = text.size() > longestQuotation;
    return '"' + printable(text.substr(0, longestQuotation)) + (cut ? "...\"" : "\"");
}

std::string printable(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (character < ' ' || character > '~') {
            appendEscape(result, character);
        } else {
            result.push_back(character);
        }
    }
    return result;
}

std::string beforeZero(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

std::string unknownNames(const std::string& kind, const std::vector<std::string>& names) {
    constexpr std::size_t most = 3;
    std::string remark = "unknown " + kind + "s are ignored:";
    for (std::size_t i = 0; i < std::min(names.size(), most); ++i) {
        remark += (i == 0 ? " " : ", ") + quotation(names[i]);
    }
    return names.size() <= most ? remark
                                : remark + " and " + std::to_string(names.size() - most) + " more";
}
