#include "tools/files/file_content.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "project/stream.h"
#include "tools/files/input_file.h"

namespace {

bool readAll(std::FILE* stream, std::string& content) {
    std::string chunk(1 << 16, '\0');
    // Behind its end, a terminal may be read further.
    while (std::feof(stream) == 0 && std::ferror(stream) == 0) {
        content.append(chunk, 0, std::fread(chunk.data(), 1, chunk.size(), stream));
    }
    return std::ferror(stream) == 0;
}

}  // namespace

std::optional<std::string> readContent(const std::string& path, std::string& content) {
    const Stream file(path == "-" ? nullptr : std::fopen(path.c_str(), "rbe"));
    std::FILE* stream = path == "-" ? stdin : file.get();
    if (path == "-") {
        reportWaiting();
    }
    if (stream == nullptr || !readAll(stream, content)) {
        return inputName(path) + ": " + std::strerror(errno);
    }
    return std::nullopt;
}
