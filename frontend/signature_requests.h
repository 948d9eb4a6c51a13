#pragma once

#include "frontend/request_run.h"
#include "frontend/response_writer.h"

// The two operations. Each takes a run whose record has a project and both encodings set, and gives
// the first rule that the request breaks, in a fixed order, which docs/http-interface.md tells.

/// Signs the data or the file.
RequestFault handleGenerateSignature(RequestRun& run);

/// Verifies the signature. That it is not valid, for whatever reason, is a verdict and no fault.
RequestFault handleVerifySignature(RequestRun& run);

/// Answers with the signature that was made, or with the verdict.
Response respondResult(RequestRun& run);
