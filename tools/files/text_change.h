#pragma once

#include <optional>
#include <span>
#include <string>

// What often happens to a text on its way from one machine to another, undone.

struct TextChange {
    const char* code;   ///< short, as in "lf"; it stays the same when words change
    const char* words;  ///< what the text is like then, behind "valid"

    /// The text so changed; nothing if that changes nothing. Takes one pass over the text.
    std::optional<std::string> (*apply)(const std::string& text);
};

/// CR LF and LF exchanged at the ends of lines; one line end less or more at the end of the text;
/// the byte order mark of UTF-8 (EF BB BF) in front of it removed or added.
std::span<const TextChange> textChanges();
