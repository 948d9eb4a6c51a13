#pragma once

#include <string>

/// A name of the library's types with its article.
inline std::string withArticle(const std::string& type) {
    if (type == "null") {
        return type;
    }
    return (type == "array" || type == "object" ? "an " : "a ") + type;
}
