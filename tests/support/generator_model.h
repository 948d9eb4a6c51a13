#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// A second form of the random generator, written for tests on libcrypto's RIPEMD-160 and SHA-256,
/// with its state as words.
class GeneratorModel {
public:
    explicit GeneratorModel(const std::vector<std::uint8_t>& seed);
    explicit GeneratorModel(std::uint32_t seed);

    /// One step.
    std::uint32_t next();

    /// Two steps, the first for the high half.
    std::uint64_t next64();

    std::vector<std::uint8_t> bytes(std::size_t length);

    /// Number of steps taken.
    std::uint64_t steps() const { return words_[0] | std::uint64_t{words_[1]} << 32; }

    /// The state as the generator holds it.
    std::array<std::uint8_t, 64> state() const;

private:
    std::array<std::uint32_t, 16> words_{};
};
