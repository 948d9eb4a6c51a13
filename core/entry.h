#pragma once

#include <cstdint>

#include "core/core_integer.h"

/// What the rest of the program may call of `core/`: each operation hands its arguments on to the
/// body of the same name in namespace core, where its contract stands, and does nothing else.
namespace coreEntry {

void coreStart();
void coreStop();

void sha256Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out);
void ripemd160Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out);
void md5Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out);

void integerImport(const std::uint8_t* stored, core::CoreInteger& value);
void integerCopy(const core::CoreInteger& source, core::CoreInteger& destination);
std::uint64_t* integerLimbs(core::CoreInteger& value);
std::uint64_t integerByteLength(const core::CoreInteger& value);
std::uint64_t integerBitLength(const core::CoreInteger& value);

std::uint64_t coreBase64Encode(const std::uint8_t* input, std::uint64_t length, char* output);
std::uint64_t coreBase64Decode(const char* input, std::uint64_t length, std::uint8_t* output);

}  // namespace coreEntry
