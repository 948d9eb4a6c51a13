#pragma once

#include "tools/request/explanation.h"
#include "tools/request/raw_request.h"
#include "tools/request/request_words.h"

// How the program answers a request, by the program's own driver, and which of its rules makes the
// answer. The core must have been started. A project that a request names is read and a signature
// that it asks for is made, and thrown away.

/// From the variables and the body to the answer.
Explanation explainRequest(const RawRequest& request);

/// From a record on, which `words` tells the names of; an encoding that it leaves open is plain.
Explanation explainRecord(const RequestRecord& record, RequestWords words);
