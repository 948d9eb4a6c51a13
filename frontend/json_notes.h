#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// What a JSON text says beyond the record, for whoever explains a request. Of names and texts no
/// more is kept than a person reads, so that it takes little memory.
struct JsonNotes {
    static constexpr std::size_t longestText = 100;
    static constexpr std::size_t mostUnknown = 3;

    /// A known member of an object as the text gives it last.
    struct Member {
        const char* type = "";    ///< of its value, as the library calls it
        std::string text{};       ///< of a string, its start
        std::uint64_t times = 0;  ///< that the text gives it
    };
    struct Object {
        std::map<std::string_view, Member> known{};  ///< by the names of `KnownMember`
        std::vector<std::string> unknown{};          ///< the first names of others, their starts
        std::uint64_t unknownCount = 0;
    };

    Object request{};         ///< the text's object
    Object signature{};       ///< its last `signature`, if that is an object
    const char* type = "";    ///< of the text's value, where it is no object
    std::size_t place = 0;    ///< byte at which the parser gave up, from 1
    std::string complaint{};  ///< its words
};
