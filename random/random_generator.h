#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "random/recursive_mutex.h"

/// Where all random bytes of the program come from: each step counts up, hashes the 64 bytes of
/// state and folds the digest into them.
///
/// Construction seeds it, and no later event does; after a fork, parent and child go on alike.
/// Several threads may use one generator, and their steps may interleave. A thread that needs both
/// locks takes `entropyLock` before `stateLock`.
struct RandomGenerator {
    /// Bytes that `addEntropy` and `addEntropyByte` fill the pool up to.
    static constexpr std::size_t poolLimit = 2048;

    std::vector<std::uint8_t> entropyPool;  ///< collected for the next seeding
    RecursiveMutex entropyLock;             ///< guards `entropyPool`

    /// Bytes 0-7: `generatorCounter`; 8-27: RIPEMD-160 of the seed; 28-59: SHA-256 of the seed, in
    /// the word order of `sha256Digest`; 60-63: zero. Steps never change bytes 56-63.
    std::array<std::uint8_t, 64> stateBlock;
    RecursiveMutex stateLock;  ///< guards `stateBlock`

    /// A generator seeded with `seedFromSystem`.
    RandomGenerator();

    /// The one generator of the process, which the first call makes and nothing destroys. That call
    /// is not guarded against a second thread.
    static RandomGenerator& instance();

    /// Writes `length` bytes to `buffer`, four from each step, least significant first; of the last
    /// step as many as are missing.
    void fillBytes(void* buffer, std::uint64_t length);

    std::uint32_t next32();

    /// Two steps; the first gives the high half.
    std::uint64_t next64();

    /// A value in [0, bound): a draw below the larger of `bound` and its bitwise complement, modulo
    /// `bound`. On x86-64, a bound of 0 ends the process by the processor's fault of a division by
    /// zero.
    std::uint32_t next32Below(std::uint32_t bound);
    std::uint64_t next64Below(std::uint64_t bound);

    /// Resets the state, seeds it from what waits in the pool, the clock and the system's random
    /// device, in this order, and empties the pool. Never fails: a missing device leaves the clock
    /// alone behind the pool.
    void seedFromSystem();

    /// Resets the state and seeds it from the four bytes of `value`, least significant first;
    /// empties the pool. The stream that follows is repeatable.
    void seedFromWord(std::uint32_t value);

    /// Appends a byte to the pool, or drops it when the pool holds `poolLimit` bytes or more.
    void addEntropyByte(std::uint8_t byte);

    /// `addEntropyByte` for each of the bytes.
    void addEntropy(const void* data, std::uint64_t length);

    /// Resets the state, seeds it from the pool and empties the pool.
    void mixPool();

    /// Sets all 64 bytes of state to zero.
    void clearState();

private:
    std::uint32_t nextWord();
    void seedState(const std::uint8_t* seed, std::size_t length);
};
