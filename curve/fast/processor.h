#pragma once

namespace core {

/// Whether the processor multiplies carry-less, as the C library found out at the process's start.
/// On other processors than x86-64 that is not asked, and the answer is no.
bool hasCarrylessMultiplication();

}  // namespace core
