#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Reads of the random device for one seed, and bytes of each read.
inline constexpr std::size_t seedRounds = 16;
inline constexpr std::size_t seedItemSize = 8;

/// Appends the seed material of the system to `pool`: the low four bytes of the time in the order
/// 2, 0, 3, 1, and sixteen groups of one byte from the random device and three zero bytes.
///
/// The device is /dev/urandom, or /dev/random when that cannot be opened; without either the four
/// time bytes are all. Each device byte is the first of a read of eight; where a read fails, the
/// low byte of `rand` stands in for it.
void collectSystemEntropy(std::vector<std::uint8_t>& pool);
