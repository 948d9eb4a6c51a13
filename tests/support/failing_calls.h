#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>

/// While it lives, blocks of operator new and calloc are watched, as are the calls of `fdopen`,
/// `fmemopen`, `fopen`, `fseek`, `ftell`, `fread` and `fwrite`, and it can make them fail.
/// What it calls before or after an `fstat` can change the file.
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
    std::map<std::string, std::string> openedInstead;  ///< by `fopen`, for these paths
    unsigned statusCalls = 0;                          ///< calls of `fstat` so far
    std::function<void(unsigned)> beforeStatus;  ///< gets the number, from 1, of one that follows
    std::function<void(unsigned)> afterStatus;   ///< and of one that has been made
    std::size_t blockLimit = ~0UL;               ///< larger blocks are refused
    unsigned givenBlocks = 0;                    ///< but so many of these are given before
    std::size_t largestRequest = 0;              ///< size of the largest block asked for
    std::size_t requestedBytes = 0;              ///< of all blocks asked for, those given back too
};
