#pragma once

#include "tools/request/explanation.h"
#include "tools/request/request_reading.h"

// The two operations on a record with a project and with both encodings set, explained. Each calls
// the engine as the program does and looks up the reason behind its answer. The core must have been
// started.

Explanation explainGenerateSignature(const RequestReading& reading);
Explanation explainVerifySignature(const RequestReading& reading);
