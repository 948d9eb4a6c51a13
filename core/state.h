#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace core {

/// Bytes of the block that `coreStart` obtains and `coreStop` gives back.
inline constexpr std::uint32_t coreArenaSize = 0x20000;

/// Entries of each block table.
inline constexpr std::size_t blockTableSize = 128;

/// A stretch of the arena; an address of null marks an empty entry.
struct CoreBlock {
    std::byte* address = nullptr;
    std::uint64_t size = 0;  ///< bytes
};

using BlockTable = std::array<CoreBlock, blockTableSize>;

// The process-wide state of the core, touched without synchronisation: one thread uses the core.

/// The arena; null while the core is stopped.
extern std::byte* coreArena;

/// Blocks carved from the arena, from entry 1 on without gaps; entry 0 stays empty.
extern BlockTable usedBlocks;

/// Free stretches of the arena, from entry 0 on without gaps.
extern BlockTable freeBlocks;

/// Live entries of `usedBlocks`.
extern std::uint32_t usedCount;

/// Blocks taken back into `freeBlocks` since `coreStart`.
extern std::uint32_t releaseCount;

/// Entry b holds the eight bits of b spread apart, bit i at bit 2i. All zero until `coreStart`, so
/// field squares are wrong before it.
extern std::array<std::uint16_t, 256> squareSpreadTable;

/// Starts the core: obtains the arena and fills `squareSpreadTable`.
///
/// The arena becomes entry 0 of `freeBlocks` with a size of 0, which ends every search of
/// `coreAlloc`: the arena is held from start to stop, and all blocks come from `hostAlloc`.
void coreStart();

/// Stops the core: gives the arena back and empties both tables; `releaseCount` and
/// `squareSpreadTable` stay. Harmless when the core is stopped already.
void coreStop();

}  // namespace core
