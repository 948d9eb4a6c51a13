#pragma once

#include <cstdint>

#include "frontend/request_record.h"

// The two operations. Each takes a record with a project and with both encodings set, writes
// exactly one response, and returns 0 after a success and -1 after a refusal. The refusals are
// tried in a fixed order, which docs/http-interface.md tells with their messages.

/// Signs the data or the file and answers with the signature's text.
std::int32_t handleGenerateSignature(const RequestRecord& record);

/// Verifies the signature and answers true or false. That a signature is not valid, for whatever
/// reason, is an answer and no failure.
std::int32_t handleVerifySignature(const RequestRecord& record);
