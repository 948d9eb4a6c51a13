#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>

#include "frontend/request_driver.h"
#include "tests/support/expected_response.h"
#include "tests/support/signature_vectors.h"
#include "tests/support/standard_streams.h"

/// What a request answers: its status and the bytes on standard output.
struct Answer {
    std::int32_t status = 1;
    std::string output;

    bool operator==(const Answer&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
    return stream << answer.status << ' ' << answer.output;
}

inline Answer answerOf(const Response& response) {
    return {response.exitStatus, capturedOutput([&] {
                writeResponse(response.status, response.contentType, response.body);
            })};
}

/// The answer to a completed record.
inline Answer answerTo(const RequestRecord& record) {
    RequestRun run;
    run.record = record;
    return answerOf(dispatchRequest(run));
}

inline Answer refusal(std::string_view message) {
    return {-1, expectedRefusal(message)};
}

/// A message with a known signature, in requests to the real engine.
class KnownRequest : public testing::Test {
protected:
    const SignatureCase& known = signatureCases().front();
    const std::string message{known.message.begin(), known.message.end()};

    /// A complete record that signs the message.
    RequestRecord signing() const {
        RequestRecord record;
        record.project = known.project;
        record.mode = RequestMode::generateSignature;
        record.encoding = TextEncoding::plain;
        record.signatureData = message;
        record.signatureDataEncoding = TextEncoding::plain;
        return record;
    }

    /// A complete record that verifies the message's known signature.
    RequestRecord verifying() const {
        RequestRecord record = signing();
        record.mode = RequestMode::verifySignature;
        record.signature = known.text;
        return record;
    }
};
