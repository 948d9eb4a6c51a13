#pragma once

#include <string>

#include "frontend/request_record.h"
#include "tests/support/project_builder.h"
#include "tools/request/raw_request.h"

// The driver and the rules of both operations once more, up to the engine.

/// How a request gets as far as the engine, or does not.
struct RequestCourse {
    std::string refusal;   ///< the message of a refusal in front of the engine; else empty
    RequestRecord record;  ///< with its defaults, when nothing is refused
    Bytes data;            ///< what the data of the request stands for, if it has any
};

/// Whether the length that is announced is one that a string can have, but beyond 64 KiB.
bool announcesMuch(const RawRequest& request);

/// Whether no string has the length that is announced, which ends the program without an answer.
bool announcesTheImpossible(const RawRequest& request);

RequestCourse referenceCourse(const RawRequest& request);

/// Status, content type and body of a success with these words in it, for a server.
std::string referenceSuccess(const RequestRecord& record, const std::string& name,
                             const std::string& word);
