#include "tools/signature/signature_list.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "engine/signature_text.h"

namespace {

constexpr std::string_view gap = "  ";

/// A character of a name, and what stands for it behind a backslash.
struct Escape {
    char character;
    char letter;
};

constexpr auto escapes = std::to_array<Escape>({{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}});

std::string escapedName(const std::string& name) {
    std::string result;
    for (const char character : name) {
        const auto* escape = std::find_if(escapes.begin(), escapes.end(), [=](const Escape& row) {
            return row.character == character;
        });
        if (escape == escapes.end()) {
            result += character;
        } else {
            result.append(1, '\\').append(1, escape->letter);
        }
    }
    return result;
}

/// Nothing where a backslash stands before another character than those.
std::optional<std::string> unescapedName(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        if (text[0] != '\\') {
            result += text[0];
            text.remove_prefix(1);
            continue;
        }
        const auto* escape = std::find_if(escapes.begin(), escapes.end(), [=](const Escape& row) {
            return text.substr(1, 1) == std::string_view(&row.letter, 1);
        });
        if (escape == escapes.end()) {
            return std::nullopt;
        }
        result += escape->character;
        text.remove_prefix(2);
    }
    return result;
}

std::optional<ListedSignature> readLine(std::string_view line) {
    const bool isEscaped = line.starts_with('\\');
    line.remove_prefix(isEscaped ? 1 : 0);
    const std::size_t end = line.find(gap);
    if (end == std::string_view::npos || line.find('\0') != std::string_view::npos ||
        parseSignatureText(line.substr(0, end)).fault != SignatureFault::none) {
        return std::nullopt;
    }
    const std::string_view text = line.substr(end + gap.size());
    std::optional<std::string> name = isEscaped ? unescapedName(text) : std::string(text);
    if (!name.has_value() || name->empty()) {
        return std::nullopt;
    }
    return ListedSignature{.signature = std::string(line.substr(0, end)), .file = std::move(*name)};
}

}  // namespace

std::string listLine(const ListedSignature& listed) {
    const std::string name = escapedName(listed.file);
    return (name == listed.file ? "" : "\\") + listed.signature + std::string(gap) + name + "\n";
}

std::string reportedName(const std::string& file) {
    if (file.find('\n') == std::string::npos) {
        return file;
    }
    std::string name = "\\";
    return name.append(escapedName(file));
}

SignatureList readSignatureList(std::string_view content) {
    SignatureList list;
    for (std::size_t number = 1; !content.empty(); ++number) {
        const std::size_t end = std::min(content.find('\n'), content.size());
        std::string_view line = content.substr(0, end);
        content.remove_prefix(std::min(end + 1, content.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.empty() || line.starts_with('#')) {
            continue;
        }
        if (std::optional<ListedSignature> listed = readLine(line)) {
            list.entries.push_back(std::move(*listed));
        } else if (list.otherLines++ == 0) {
            list.firstOther = number;
        }
    }
    return list;
}
