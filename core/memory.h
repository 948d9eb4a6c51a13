#pragma once

#include <cstdint>

namespace core {

/// Flag of `coreAlloc`: zero the block. Blocks of `hostAlloc` are zero in any case.
inline constexpr std::uint64_t coreAllocZero = 1;

/// A block of at least `size` bytes, 8-byte aligned, without a header.
///
/// First fit in `freeBlocks`, carved from the front of the entry in multiples of 8 bytes. An entry
/// of size 0 ends the search; then, and when the table of used blocks is full, the block comes from
/// `hostAlloc` with the size as given, cut to 32 bits.
void* coreAlloc(std::uint64_t size, std::uint64_t flags);

/// Takes back a block of `coreAlloc`; null is accepted.
///
/// A carved block joins the first free entry that starts at the block's end, or that starts at the
/// block's address less the block's size. The size of that entry is not looked at: it is really
/// adjacent only if it has the same size. Failing both, the block becomes an entry of its own; a
/// table without room for it leaves the stretch unused until `coreStop`. After the sixteenth carved
/// block taken back, each further one ends with `coreCompact`.
void coreFree(void* block);

/// Joins neighbours in `freeBlocks`: one pass over the entries in order, each of which takes in at
/// most one other entry.
void coreCompact();

}  // namespace core
