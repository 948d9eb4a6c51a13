#pragma once

#include <cstdint>

namespace core {

// The three services that the crypto core asks of the program around it. It calls out of itself
// nowhere else, beside asking the C library whether the processor has carry-less multiplication.
// The linker resolves them, so a test can put its own in their place.

/// A block of `size` bytes from the process's general allocator, all of it zero and aligned for any
/// 64-bit word. Memory exhaustion raises std::bad_alloc, which ends the process.
void* hostAlloc(std::uint32_t size);

/// Gives back a block of `hostAlloc`; null is ignored.
void hostFree(void* block);

/// Fills `length` bytes at `buffer` from the process-wide random generator, seeding it at first
/// use.
void hostRandomBytes(void* buffer, std::uint32_t length);

}  // namespace core
