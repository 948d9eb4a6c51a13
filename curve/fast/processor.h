#pragma once

namespace core {

/// Whether the processor multiplies carry-less, as the C library found out at the process's start.
bool hasCarrylessMultiplication();

}  // namespace core
