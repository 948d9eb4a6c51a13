#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <stdlib.h>

#include "tests/support/bytes.h"

/// A new folder that is removed, with everything in it, at the end of the scope.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "sign-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder at " + name);
        }
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The path of a file in the folder, whether it exists or not.
    std::string file(std::string_view name) const { return path_ / name; }

    std::string path() const { return path_.string(); }

    /// Names of all that is in the folder.
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            found.push_back(entry.path().filename());
        }
        return found;
    }

    /// Writes a file and returns its path.
    std::string write(std::string_view name, const Bytes& bytes) const {
        std::ofstream stream(path_ / name, std::ios::binary | std::ios::trunc);
        stream.write(reinterpret_cast<const char*>(bytes.data()),
                     static_cast<std::streamsize>(bytes.size()));
        if (!stream.flush()) {
            throw std::runtime_error("cannot write " + file(name));
        }
        return file(name);
    }

private:
    std::filesystem::path path_;
};

/// All bytes of a file; throws std::runtime_error when it cannot be opened.
inline Bytes fileBytes(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}
