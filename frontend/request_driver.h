#pragma once

#include <cstdint>

#include "frontend/request_run.h"
#include "frontend/request_source.h"
#include "frontend/response_writer.h"

/// Serves the request of this process and writes its one response. Returns the exit status: 0 after
/// a success, -1 after a refusal.
std::int32_t runRequest();

/// From a request to its response, which may refer to the run. Raises what the readers raise.
Response answerRequest(const RequestSource& source, RequestRun& run);

/// From a record that has been read to the response. `byDefault` is the encoding of a result that
/// leaves it open.
Response answerRecord(RequestRun& run, TextEncoding byDefault);

/// From a completed record to the response, by the handler of its mode; a mode that has none is a
/// server error.
Response dispatchRequest(RequestRun& run);
