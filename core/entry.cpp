#include "core/entry.h"

#include "core/core_base64.h"
#include "core/hash.h"
#include "core/integer.h"
#include "core/state.h"

namespace coreEntry {

void coreStart() {
    core::coreStart();
}

void coreStop() {
    core::coreStop();
}

void sha256Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out) {
    core::sha256Digest(data, length, out);
}

void ripemd160Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out) {
    core::ripemd160Digest(data, length, out);
}

void md5Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out) {
    core::md5Digest(data, length, out);
}

void integerImport(const std::uint8_t* stored, core::CoreInteger& value) {
    core::integerImport(stored, value);
}

void integerCopy(const core::CoreInteger& source, core::CoreInteger& destination) {
    core::integerCopy(source, destination);
}

std::uint64_t* integerLimbs(core::CoreInteger& value) {
    return core::integerLimbs(value);
}

std::uint64_t integerByteLength(const core::CoreInteger& value) {
    return core::integerByteLength(value);
}

std::uint64_t integerBitLength(const core::CoreInteger& value) {
    return core::integerBitLength(value);
}

std::uint64_t coreBase64Encode(const std::uint8_t* input, std::uint64_t length, char* output) {
    return core::coreBase64Encode(input, length, output);
}

std::uint64_t coreBase64Decode(const char* input, std::uint64_t length, std::uint8_t* output) {
    return core::coreBase64Decode(input, length, output);
}

}  // namespace coreEntry
