#pragma once

#include <cstddef>
#include <cstdint>

namespace core {

inline constexpr std::size_t hashBlockSize = 64;

/// Runs the chaining state over `blocks` blocks of 64 bytes at `data`.
using HashBlockFunction = void (*)(std::uint32_t* state, const std::uint8_t* data,
                                   std::uint64_t blocks);

/// A HashBlockFunction of a function for one block.
template <void (*runBlock)(std::uint32_t* state, const std::uint8_t* block)>
void runEachBlock(std::uint32_t* state, const std::uint8_t* data, std::uint64_t blocks) {
    for (std::uint64_t i = 0; i < blocks; ++i) {
        runBlock(state, data + i * hashBlockSize);
    }
}

/// Order of the bytes in the bit count that ends the padding.
enum class LengthOrder { littleEndian, bigEndian };

/// The shape that the three hashes share: the whole blocks of the message, then one or two blocks
/// of its remainder, the byte 0x80, zero bytes and the 64-bit bit count. `state` holds the initial
/// value before and the digest after.
void hashMessage(std::uint32_t* state, const std::uint8_t* data, std::uint64_t length,
                 HashBlockFunction runBlocks, LengthOrder order);

}  // namespace core
