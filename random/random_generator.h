#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "random/recursive_mutex.h"

/// Counter-driven hash generator with a state of 64 bytes: the one source of random bytes.
///
/// It is seeded at construction and never reseeds by itself; a forked child continues its parent's
/// stream. Its operations may be called from several threads; each step takes the lock for itself.
/// Where both locks are held, `entropyLock` is taken first.
struct RandomGenerator {
    /// Bytes that `addEntropy` and `addEntropyByte` fill the pool up to.
    static constexpr std::size_t poolLimit = 2048;

    std::vector<std::uint8_t> entropyPool;  ///< bytes that wait to be mixed into the state
    RecursiveMutex entropyLock;             ///< guards `entropyPool`

    /// Bytes 0-7: `generatorCounter`; 8-27: RIPEMD-160 of the seed; 28-59: SHA-256 of the seed, in
    /// the word order of `sha256Digest`; 60-63: zero. Steps never change bytes 56-63.
    std::array<std::uint8_t, 64> stateBlock;
    RecursiveMutex stateLock;  ///< guards `stateBlock`

    /// A generator seeded with `seedFromSystem`.
    RandomGenerator();

    /// The process-wide generator, made at the first call and never destroyed. Two threads in a
    /// first call could each make one.
    static RandomGenerator& instance();

    /// Fills `length` bytes at `buffer`: one step for each group of four, stored little-endian, and
    /// one more for a rest, of which the low bytes are used. A length of 0 takes no step.
    void fillBytes(void* buffer, std::uint64_t length);

    std::uint32_t next32();

    /// Two steps; the first gives the high half.
    std::uint64_t next64();

    /// A value in [0, bound), for a bound above 0: a draw below the larger of `bound` and its
    /// bitwise complement, modulo `bound`.
    std::uint32_t next32Below(std::uint32_t bound);
    std::uint64_t next64Below(std::uint64_t bound);

    /// Resets the state and seeds it from the clock and the system's random device. Never fails: a
    /// missing device leaves the clock alone as the seed.
    void seedFromSystem();

    /// Resets the state and seeds it from the four bytes of `value`, least significant first;
    /// empties the pool. The stream that follows is repeatable.
    void seedFromWord(std::uint32_t value);

    /// Appends a byte to the pool, or drops it when the pool holds `poolLimit` bytes or more.
    void addEntropyByte(std::uint8_t byte);

    /// Appends as many bytes as fit below `poolLimit`; drops the rest.
    void addEntropy(const void* data, std::uint64_t length);

    /// Resets the state, seeds it from the pool and empties the pool.
    void mixPool();

    /// Zeroes the state, counter included.
    void clearState();

private:
    std::uint32_t nextWord();
    void seedState(const std::uint8_t* seed, std::size_t length);
};
