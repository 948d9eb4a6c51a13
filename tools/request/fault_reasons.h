#pragma once

#include "frontend/request_run.h"
#include "tools/refusal.h"
#include "tools/request/raw_request.h"
#include "tools/request/request_words.h"

/// The rule that stopped a run while its request was read, and what broke it.
Refusal readingRefusal(const RawRequest& request, const RequestRun& run);

/// The rule that stopped a run whose record is read, or that decided its result.
Refusal recordRuling(const RequestRun& run, const RequestWords& words);
