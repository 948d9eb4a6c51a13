#pragma once

#include "tools/request/explanation.h"
#include "tools/request/raw_request.h"
#include "tools/request/request_reading.h"

// How the program answers a request, by the program's own routines, and which of its rules makes
// the answer. The core must have been started. A project that a request names is read and a
// signature that it asks for is made, and thrown away.

/// From the environment and standard input to the answer. Raises std::system_error when the system
/// denies a file for the body.
Explanation explainRequest(const RawRequest& request);

/// The rules behind the reading, on a request that has been read.
Explanation explainReading(RequestReading reading);
