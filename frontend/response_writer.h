#pragma once

#include <cstdint>
#include <cstring>
#include <nlohmann/json_fwd.hpp>
#include <string>

/// The body of a response: terminated text, and the length that is announced for it. It owns
/// nothing.
struct ResponseBody {
    const char* text;
    std::uint64_t length;

    ResponseBody(const char* bytes, std::uint64_t byteCount) : text(bytes), length(byteCount) {}
    ResponseBody(const std::string& bytes) : ResponseBody(bytes.c_str(), bytes.size()) {}
    ResponseBody(const char* terminated) : ResponseBody(terminated, std::strlen(terminated)) {}
};

/// What a request is answered with. It refers to its texts: a refusal takes no memory.
struct Response {
    const char* status;
    const char* contentType;
    ResponseBody body;
    std::int32_t exitStatus;  ///< of the program: 0 after a success, -1 after a refusal
};

// The four kinds of answer.

Response respondOk(const ResponseBody& body);
Response respondBadRequest(const ResponseBody& body);
Response respondServerError(const ResponseBody& body);

/// Answers with the compact text of a JSON value, which is written to `text`.
Response respondJson(const nlohmann::json& value, std::string& text);

/// Whether the response begins with an HTTP status line instead of a "Status:" line for the server.
/// Written once, before the request is read.
extern bool nphOutput;

/// Writes the whole response to standard output.
///
/// Without a body, the first line is followed by a carriage return and two line feeds, and that is
/// all. Of the announced length only 32 bits are printed, as a signed number; the text ends at its
/// first zero byte. A write that fails goes unnoticed.
void writeResponse(const char* status, const char* contentType, const ResponseBody& body);
