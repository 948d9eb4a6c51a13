#pragma once

#include <string>
#include <vector>

#include "frontend/request_run.h"
#include "tools/request/request_words.h"

/// What surprises about the values that a run has handed to the engine: bytes that base64 adds,
/// texts that end early, files that count in part, a project that others can read or replace, a
/// signature that stands for more or less than it seems, a random device that makes no secret
/// nonce.
std::vector<std::string> engineRemarks(const RequestRun& run, const RequestNames& names);
