#include "tools/files/file_content.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "project/stream.h"
#include "tools/files/input_file.h"

namespace {

bool readUpTo(std::size_t most, std::FILE* stream, std::string& content) {
    std::array<char, BUFSIZ> chunk{};
    // Behind its end, a terminal may be read further.
    while (most > 0 && std::feof(stream) == 0 && std::ferror(stream) == 0) {
        const std::size_t count = std::fread(chunk.data(), 1, std::min(chunk.size(), most), stream);
        content.append(chunk.data(), count);
        most -= count;
    }
    return std::ferror(stream) == 0;
}

}  // namespace

std::optional<std::string> readContent(const std::string& path, std::string& content,
                                       std::size_t most) {
    Stream file;
    std::FILE* stream = stdin;
    if (path == "-") {
        reportWaiting();
    } else {
        file.reset(std::fopen(path.c_str(), "re"));
        stream = file.get();
    }
    if (stream == nullptr || !readUpTo(most, stream, content)) {
        return inputName(path) + ": " + std::strerror(errno);
    }
    return std::nullopt;
}
