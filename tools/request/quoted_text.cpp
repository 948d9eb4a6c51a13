#include "tools/request/quoted_text.h"

#include <cstddef>

#include "tools/escaped_text.h"

namespace {

constexpr std::size_t longestQuotation = 60;

}  // namespace

std::string quotation(std::string_view text) {
    std::string result = "\"";
    for (const char character : text.substr(0, longestQuotation)) {
        if (character < ' ' || character > '~') {
            appendEscape(result, character);
        } else {
            result.push_back(character);
        }
    }
    return result + (text.size() > longestQuotation ? "...\"" : "\"");
}

std::string beforeZero(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

std::string unknownNames(const std::string& kind, const std::vector<std::string>& names,
                         std::uint64_t count) {
    std::string remark = "unknown " + kind + "s are ignored:";
    for (std::size_t i = 0; i < names.size(); ++i) {
        remark += (i == 0 ? " " : ", ") + quotation(names[i]);
    }
    return count == names.size()
               ? remark
               : remark + " and " + std::to_string(count - names.size()) + " more";
}
