#include "frontend/request_body.h"

#include <limits>
#include <new>
#include <stdexcept>

RequestBody readRequestBody(std::FILE* stream, std::uint64_t length) {
    constexpr std::uint64_t longest = std::numeric_limits<std::int64_t>::max();
    if (length >= longest) {
        throw std::length_error("request body");
    }
    RequestBody body;
    body.bytes.reset(static_cast<char*>(std::calloc(length + 1, 1)));
    if (body.bytes == nullptr) {
        throw std::bad_alloc();
    }
    body.length = length;
    // Unbuffered, so that the read asks the system for no more than the body.
    std::setvbuf(stream, nullptr, _IONBF, 0);
    body.received = std::fread(body.bytes.get(), 1, length, stream);
    return body;
}
