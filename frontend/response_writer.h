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

/// Whether the response begins with an HTTP status line instead of a "Status:" line for the server.
/// Written once, before the request is read.
extern bool nphOutput;

/// Writes the whole response to standard output.
///
/// Without a body, the first line is followed by a carriage return and two line feeds, and that is
/// all. Of the announced length only 32 bits are printed, as a signed number; the text ends at its
/// first zero byte. A write that fails goes unnoticed.
void writeResponse(const char* status, const char* contentType, const ResponseBody& body);

// The four kinds of answer. A refusal gives -1, the exit status of the program.

void respondOk(const ResponseBody& body);
std::int32_t respondBadRequest(const ResponseBody& body);
std::int32_t respondServerError(const ResponseBody& body);

/// Answers with the compact text of a JSON value.
void respondJson(const nlohmann::json& value);
