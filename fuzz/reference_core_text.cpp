#include "fuzz/reference_core_text.h"

#include <algorithm>
#include <cstddef>

CoreTextMeaning referenceCoreText(std::string_view text) {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    CoreTextMeaning meaning;
    if (text.size() % 4 != 0) {
        return meaning;
    }
    meaning.bytes.resize(text.size() / 4 * 3);
    for (std::size_t bit = 0; bit < 6 * text.size(); ++bit) {
        const std::size_t found = alphabet.find(text[bit / 6]);
        const std::size_t value = found == std::string_view::npos ? 0 : found;
        if ((value >> bit % 6 & 1) != 0) {
            meaning.bytes[bit / 8] |= static_cast<std::uint8_t>(1U << bit % 8);
        }
    }
    meaning.count = meaning.bytes.size() -
                    static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '='));
    return meaning;
}
