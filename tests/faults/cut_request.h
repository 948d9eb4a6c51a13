#pragma once

#include "tests/faults/whole_request.h"

/// The request of which only the first `length` bytes of the body come, with what is then right:
/// the refusal, or the answer to the form text that did come.
WholeRequest cutRequest(const WholeRequests& requests, const WholeRequest& request,
                        std::size_t length);
