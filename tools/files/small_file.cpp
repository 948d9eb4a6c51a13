#include "tools/files/small_file.h"

#include <cstddef>
#include <utility>

#include "tools/files/file_content.h"
#include "tools/files/input_file.h"

SmallFile readSmallFile(const std::string& path, const std::string& what) {
    constexpr std::size_t longest = 4096;
    std::string content;
    if (auto failure = readContent(path, content, longest + 1)) {
        return {.failure = std::move(failure), .content = {}};
    }
    if (content.size() > longest) {
        return {.failure = inputName(path) + ": has more than " + std::to_string(longest) +
                           " bytes, too many for a " + what,
                .content = {}};
    }
    return {.failure = std::nullopt, .content = std::move(content)};
}
