#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

/// The number of descriptors that this process has open.
inline std::ptrdiff_t openFiles() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open));
}
