#pragma once

#include <cstdint>

#include "frontend/request_record.h"

/// Serves the request of the environment and standard input and writes its one response. Returns
/// the exit status: 0 after a success, -1 after a refusal.
std::int32_t runRequest();

/// Hands a completed record to the handler of its mode; a mode that has none is a server error.
std::int32_t dispatchRequest(const RequestRecord& record);
