#include "tools/files/text_change.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

using Changed = std::optional<std::string>;

Changed withLineFeeds(const std::string& text) {
    std::string changed;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r' || text[i + 1] != '\n') {
            changed += text[i];
        }
    }
    return changed.size() == text.size() ? std::nullopt : Changed(std::move(changed));
}

Changed withCarriageReturns(const std::string& text) {
    std::string changed;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) {
            changed += '\r';
        }
        changed += text[i];
    }
    return changed.size() == text.size() ? std::nullopt : Changed(std::move(changed));
}

Changed withoutLastLineEnd(const std::string& text) {
    if (!text.ends_with('\n')) {
        return std::nullopt;
    }
    return text.substr(0, text.size() - (text.ends_with("\r\n") ? 2 : 1));
}

Changed withLineFeed(const std::string& text) {
    return text + "\n";
}

Changed withCarriageReturnAndLineFeed(const std::string& text) {
    return text + "\r\n";
}

Changed withoutByteOrderMark(const std::string& text) {
    return text.starts_with(byteOrderMark) ? Changed(text.substr(byteOrderMark.size()))
                                           : std::nullopt;
}

Changed withByteOrderMark(const std::string& text) {
    return std::string(byteOrderMark) + text;
}

constexpr auto changes = std::to_array<TextChange>({
    {"lf", "has LF instead of CR LF at the ends of its lines", withLineFeeds},
    {"crlf", "has CR LF instead of LF at the ends of its lines", withCarriageReturns},
    {"line-end-removed", "has one line end less at its end", withoutLastLineEnd},
    {"lf-added", "has one more LF at its end", withLineFeed},
    {"crlf-added", "has one more CR LF at its end", withCarriageReturnAndLineFeed},
    {"bom-removed", "has no byte order mark (EF BB BF) in front", withoutByteOrderMark},
    {"bom-added", "has a byte order mark (EF BB BF) in front", withByteOrderMark},
});

}  // namespace

std::span<const TextChange> textChanges() {
    return changes;
}
