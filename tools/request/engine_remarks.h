#pragma once

#include <string>
#include <vector>

#include "tools/request/request_reading.h"

/// What surprises about the values that a request hands to the engine: bytes that base64 adds,
/// texts that end early, files that count in part, a project that others can read or replace, a
/// signature that stands for more or less than it seems, a random device that makes no secret
/// nonce.
std::vector<std::string> engineRemarks(const RequestReading& reading);
