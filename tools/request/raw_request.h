#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "frontend/request_source.h"

/// What reaches the program for one request.
struct RawRequest {
    std::optional<std::string> contentType{};    ///< CONTENT_TYPE; unset if absent
    std::optional<std::string> contentLength{};  ///< CONTENT_LENGTH
    std::string body{};                          ///< what arrives
};

/// A request in memory as a source, which refers to it. Raises std::bad_alloc when there is no
/// stream for its body.
class RawRequestSource {
public:
    explicit RawRequestSource(const RawRequest& request);

    operator RequestSource() const;

private:
    struct Close {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };

    const RawRequest& request_;
    std::unique_ptr<std::FILE, Close> body_;
};
