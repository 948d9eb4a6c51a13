#pragma once

#include <algorithm>
#include <cstdint>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "frontend/request_driver.h"
#include "tests/support/environment.h"
#include "tests/support/expected_response.h"
#include "tests/support/standard_streams.h"
#include "tools/request/explanation.h"
#include "tools/request/raw_request.h"

// What the program really answers to a request that is explained.

/// Status and body of a response; both empty when there is none.
struct RequestAnswer {
    std::string status;
    std::string body;
};

inline std::ostream& operator<<(std::ostream& stream, const RequestAnswer& answer) {
    return stream << '"' << answer.status << "\" \"" << answer.body << '"';
}

/// The answer in these bytes of standard output, written for a server.
inline RequestAnswer answerFrom(const std::string& output) {
    constexpr std::string_view start = "Status: ";
    if (!output.starts_with(start)) {
        return {};
    }
    return {output.substr(start.size(), output.find('\r') - start.size()), responseBody(output)};
}

inline Environment environmentOf(const RawRequest& request) {
    Environment variables;
    if (request.contentType.has_value()) {
        variables["CONTENT_TYPE"] = *request.contentType;
    }
    if (request.contentLength.has_value()) {
        variables["CONTENT_LENGTH"] = *request.contentLength;
    }
    return variables;
}

/// The answer of the program's driver in this process; what would end the program gives none.
inline RequestAnswer answerOfDriver(const RawRequest& request) {
    const ScopedCgiEnvironment environment(environmentOf(request));
    const ScopedInput input(request.body);
    return answerFrom(capturedOutput([] {
        try {
            runRequest();
        } catch (const std::length_error&) {
        } catch (const std::bad_alloc&) {
        }
    }));
}

inline bool isSignatureText(std::string_view text) {
    return text.size() > 40 && text.size() % 4 == 0 &&
           text.find_first_not_of(
               "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=") ==
               std::string_view::npos;
}

/// Whether the explanation tells this answer; a signature in it may be any.
inline bool tells(const Explanation& explanation, const RequestAnswer& answer) {
    const std::string& told = explanation.body;
    const std::size_t at = told.find(signaturePlaceholder);
    if (explanation.status != answer.status || at == std::string::npos) {
        return explanation.status == answer.status && told == answer.body;
    }
    const std::string before = told.substr(0, at);
    const std::string after = told.substr(at + std::string_view(signaturePlaceholder).size());
    const std::size_t around = before.size() + after.size();
    return answer.body.size() > around && answer.body.starts_with(before) &&
           answer.body.ends_with(after) &&
           isSignatureText(answer.body.substr(before.size(), answer.body.size() - around));
}
