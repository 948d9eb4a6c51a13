#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A file in memory that every run writes anew, open for the rest of the process under a descriptor
/// of a fixed number, so that inputs can name it.
class MemoryFile {
public:
    explicit MemoryFile(int descriptor);

    void write(const std::vector<std::uint8_t>& bytes) const;
    std::vector<std::uint8_t> content() const;

    /// Whether this path, however it is spelled, leads to the file.
    bool isAt(const std::string& path) const;

    /// A path that opens it.
    const std::string& path() const { return path_; }

private:
    int descriptor_;
    std::string path_;
};
