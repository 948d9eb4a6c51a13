#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/request/explanation.h"

/// What reaches the program for one request.
struct RawRequest {
    std::optional<std::string> contentType;    ///< CONTENT_TYPE; unset if absent
    std::optional<std::string> contentLength;  ///< CONTENT_LENGTH
    std::string body;                          ///< what arrives on standard input
};

/// How one of the program's readers leaves a request.
enum class InputOutcome {
    accepted,
    refused,
    tooLong,   ///< it announces a body that no memory holds
    noMemory,  ///< it announces a body that there is no memory for
};

/// Runs a reader of the program with the request's body as its standard input and the request's
/// length in its environment, and puts both back; there must be a standard input. Raises
/// std::system_error when the system denies a file for the body.
InputOutcome readAsProgram(const RawRequest& request, const std::function<bool()>& reader);

/// The end of the process after `tooLong` and `noMemory`; `kind` is "form" or "json".
Explanation explainSilence(const RawRequest& request, InputOutcome outcome,
                           const std::string& kind);

/// Remarks on a length that is read as `length`: how it counts, and a body that has more bytes.
std::vector<std::string> lengthRemarks(const RawRequest& request, std::uint64_t length);
