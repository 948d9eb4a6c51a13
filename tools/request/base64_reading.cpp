#include "tools/request/base64_reading.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "frontend/base64_decoder.h"
#include "tools/counted_text.h"
#include "tools/request/quoted_text.h"

namespace {

constexpr std::size_t groupSize = 4;

bool decodes(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    return base64Decode(text, bytes);
}

std::string placed(char character, std::size_t at) {
    return quotation({&character, 1}) + ", character " + std::to_string(at + 1) +
           " of the base64 data,";
}

/// Why a "=" may not stand at this place of the text.
std::optional<Ruling> paddingRefusal(std::string_view text, std::size_t at) {
    if (at < text.size() - groupSize) {
        return Ruling{"base64.padding", placed('=', at) + " stands in front of the last group"};
    }
    const std::size_t behind = text.find_first_not_of('=', at);
    if (behind != std::string_view::npos) {
        return Ruling{"base64.padding", placed(text[behind], behind) + " stands behind a \"=\""};
    }
    return std::nullopt;
}

}  // namespace

std::optional<Ruling> base64Refusal(std::string_view text) {
    if (text.empty() || text.size() % groupSize != 0) {
        return Ruling{"base64.length", "the base64 data are not whole groups of four, but " +
                                           counted(text.size(), "character")};
    }
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '=') {
            return paddingRefusal(text, at);
        }
        if (!decodes(text[at] + std::string("AAA"))) {
            return Ruling{"base64.character",
                          placed(text[at], at) + " is outside the alphabet of RFC 4648"};
        }
    }
    return std::nullopt;
}
