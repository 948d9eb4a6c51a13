#pragma once

#include <optional>
#include <string>

/// A raw request, one in options, or the list of rules.
struct ExplainOptions {
    // A raw request: the body, and what the server would set.
    std::optional<std::string> body;           ///< path of the body; "-" for standard input
    std::optional<std::string> contentType;    ///< CONTENT_TYPE; unset if absent
    std::optional<std::string> contentLength;  ///< CONTENT_LENGTH; the body's size if absent
    bool noContentLength = false;              ///< CONTENT_LENGTH is unset

    // Or a request in options, which verifies if there is a signature and signs otherwise.
    std::optional<std::string> project;
    std::optional<std::string> data;
    std::optional<std::string> dataEncoding;  ///< as a request would say it
    std::optional<std::string> file;
    std::optional<std::string> signature;

    bool rules = false;

    bool json = false;
};

/// Tells how the program answers the request and which rule makes it so, or lists all rules. With a
/// FIFO in the place of the random device, only a request in options that verifies is explained:
/// the program itself would wait to sign.
int explainCommand(const ExplainOptions& options);
