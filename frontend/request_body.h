#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

/// The body of a request as it came from its stream: `length` bytes as announced and one more,
/// all zero behind the `received` bytes that arrived.
struct RequestBody {
    struct Release {
        void operator()(char* bytes) const { std::free(bytes); }
    };

    std::unique_ptr<char, Release> bytes;
    std::uint64_t length = 0;
    std::uint64_t received = 0;
};

/// Reads up to `length` bytes in one read of the standard library, which waits for a body that
/// arrives in pieces and takes nothing behind it. Memory is touched only as far as bytes arrive.
///
/// Raises std::length_error for 2^63 - 1 bytes or more, and std::bad_alloc when there is no memory
/// for the body; either ends the process.
RequestBody readRequestBody(std::FILE* stream, std::uint64_t length);
