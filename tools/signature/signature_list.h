#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Lists of signatures: on each line a signature, two spaces and the name of its file. Where a name
// has a backslash, a line feed or a carriage return, the line begins with a backslash, and these
// stand in the name as "\\", "\n" and "\r": sha256sum(1) writes and reads its lists so.

struct ListedSignature {
    std::string signature;
    std::string file;

    bool operator==(const ListedSignature&) const = default;
};

/// The line of a list, with its line feed.
std::string listLine(const ListedSignature& listed);

/// What a report on a list calls a file: its name, or if a line feed is in it, what a line has of
/// it, the backslash in front of the line included.
std::string reportedName(const std::string& file);

struct SignatureList {
    std::vector<ListedSignature> entries;
    std::size_t otherLines = 0;  ///< that are none of the list's
    std::size_t firstOther = 0;  ///< the number of the first of them, from 1
};

/// Reads a list. Empty lines and those that begin with "#" are left out, and a carriage return at
/// the end of a line is not taken for a part of it.
///
/// Of the list are lines with a text without a `SignatureFault` and the name of a file. No name is
/// empty or has a zero byte.
SignatureList readSignatureList(std::string_view content);
