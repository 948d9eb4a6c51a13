#include "tools/files/small_file.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <utility>

#include "project/stream.h"
#include "tools/files/input_file.h"

SmallFile readSmallFile(const std::string& path, const std::string& what) {
    constexpr std::size_t longest = 4096;
    const std::string name = inputName(path) + ": ";
    const bool isStandardInput = path == "-";
    const Stream file(isStandardInput ? nullptr : std::fopen(path.c_str(), "rbe"));
    std::FILE* stream = isStandardInput ? stdin : file.get();
    if (isStandardInput) {
        reportWaiting();
    }
    if (stream == nullptr) {
        return {.failure = name + std::strerror(errno), .content = {}};
    }
    std::string content(longest + 1, '\0');
    content.resize(std::fread(content.data(), 1, content.size(), stream));
    if (std::ferror(stream) != 0) {
        return {.failure = name + std::strerror(errno), .content = {}};
    }
    if (content.size() > longest) {
        return {.failure = name + "has more than " + std::to_string(longest) +
                           " bytes, too many for a " + what,
                .content = {}};
    }
    return {.failure = std::nullopt, .content = std::move(content)};
}
