#pragma once

#include <cstdint>
#include <string>

/// "1 entry", "5 entries".
inline std::string counted(std::uint64_t count, const std::string& singular,
                           const std::string& plural) {
    return std::to_string(count) + " " + (count == 1 ? singular : plural);
}

/// "1 byte", "5 bytes".
inline std::string counted(std::uint64_t count, const std::string& singular) {
    return counted(count, singular, singular + "s");
}
