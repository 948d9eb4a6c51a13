#pragma once

#include <cstddef>

/// While it lives, blocks of operator new and calloc are watched, and it can make calls fail.
///
/// It belongs to the executables that list `SIGN_FAILING_CALLS` among their sources and call
/// `sign_watch_calls`.
struct ScopedFailingCalls {
    ScopedFailingCalls();
    ~ScopedFailingCalls();
    ScopedFailingCalls(const ScopedFailingCalls&) = delete;
    ScopedFailingCalls& operator=(const ScopedFailingCalls&) = delete;

    bool failWrites = false;         ///< `fwrite` writes nothing and answers 0
    std::size_t blockLimit = ~0UL;   ///< larger blocks are refused
    std::size_t largestRequest = 0;  ///< size of the largest block asked for
};
