#include "frontend/invocation.h"

std::string fileStem(std::string_view path) {
    const std::size_t separator = path.find_last_of("/\\");
    const std::size_t start = separator == std::string_view::npos ? 0 : separator + 1;
    const std::size_t dot = path.rfind('.');
    const bool hasExtension = dot != std::string_view::npos && dot >= start;
    return std::string(path.substr(start, hasExtension ? dot - start : std::string_view::npos));
}

bool isNphInvocation(std::string_view path) {
    return fileStem(path).starts_with("nph-");
}
