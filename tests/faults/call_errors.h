#pragma once

#include <cstdint>
#include <vector>

#include "tests/faults/call_tracer.h"

/// Every way in which a call that was made may fail instead, or give less than it gave: each error
/// that Linux's manual pages list for it, and for a read or a write every shorter count.
std::vector<CallChange> faultsOf(const SystemCall& call, const std::vector<SystemCall>& before);

/// The errors of calls with this number.
const std::vector<int>& errorsOf(std::uint64_t call);
