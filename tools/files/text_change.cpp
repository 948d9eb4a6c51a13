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
    {"lf", "with LF instead of CR LF line ends", withLineFeeds},
    {"crlf", "with CR LF instead of LF line ends", withCarriageReturns},
    {"line-end-removed", "without the last line end", withoutLastLineEnd},
    {"lf-added", "with one more LF at the end", withLineFeed},
    {"crlf-added", "with one more CR LF at the end", withCarriageReturnAndLineFeed},
    {"bom-removed", "without the byte order mark (EF BB BF) at the start", withoutByteOrderMark},
    {"bom-added", "with a byte order mark (EF BB BF) at the start", withByteOrderMark},
});

}  // namespace

std::span<const TextChange> textChanges() {
    return changes;
}
