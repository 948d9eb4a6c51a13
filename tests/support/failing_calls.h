#pragma once

#include <cstddef>

/// While it lives, blocks of operator new and calloc are watched, as are the calls of `fdopen`,
/// `fopen`, `fseek`, `ftell`, `fread` and `fwrite`, and it can make them fail.
///
/// It belongs to the executables that list `SIGN_FAILING_CALLS` among their sources and call
/// `sign_watch_calls`.
struct ScopedFailingCalls {
    ScopedFailingCalls();
    ~ScopedFailingCalls();
    ScopedFailingCalls(const ScopedFailingCalls&) = delete;
    ScopedFailingCalls& operator=(const ScopedFailingCalls&) = delete;

    unsigned streamCalls = 0;        ///< calls on streams so far
    unsigned failingStreamCall = 0;  ///< number, from 1, of the one that fails and does nothing
    std::size_t blockLimit = ~0UL;   ///< larger blocks are refused
    std::size_t largestRequest = 0;  ///< size of the largest block asked for
};
