#include "core/memory.h"

#include <cstddef>
#include <cstring>

#include "core/host.h"
#include "core/state.h"

namespace core {

namespace {

/// Releases beyond which every further one compacts.
constexpr std::uint32_t releasesBeforeCompaction = 16;

/// Index behind the last live entry, counted from `first`.
std::size_t tableEnd(const BlockTable& table, std::size_t first) {
    std::size_t end = first;
    while (end < table.size() && table[end].address != nullptr) {
        ++end;
    }
    return end;
}

/// Moves the last live entry into place `index` and clears the last place.
void removeEntry(BlockTable& table, std::size_t index) {
    const std::size_t last = tableEnd(table, index) - 1;
    table[index] = table[last];
    table[last] = {};
}

std::byte* carve(std::uint64_t size) {
    for (std::size_t i = 0; i < freeBlocks.size() && freeBlocks[i].size != 0; ++i) {
        CoreBlock& entry = freeBlocks[i];
        if (entry.size < size) {
            continue;
        }
        std::byte* address = entry.address;
        entry.address += size;
        entry.size -= size;
        if (entry.size == 0) {
            removeEntry(freeBlocks, i);
        }
        return address;
    }
    return nullptr;
}

void takeBack(const CoreBlock& block) {
    const std::size_t end = tableEnd(freeBlocks, 0);
    for (std::size_t i = 0; i < end; ++i) {
        CoreBlock& entry = freeBlocks[i];
        if (entry.address == block.address + block.size) {
            entry.address = block.address;
            entry.size += block.size;
            return;
        }
        if (entry.address + block.size == block.address) {
            entry.size += block.size;
            return;
        }
    }
    if (end < freeBlocks.size()) {
        freeBlocks[end] = block;
    }
}

/// Joins the first neighbour of entry `index` to it; the neighbour's place is filled by the last
/// entry.
void joinOneNeighbour(std::size_t index) {
    CoreBlock& entry = freeBlocks[index];
    const std::size_t end = tableEnd(freeBlocks, 0);
    for (std::size_t other = 0; other < end; ++other) {
        const CoreBlock& neighbour = freeBlocks[other];
        if (other == index) {
            continue;
        }
        const bool above = neighbour.address == entry.address + entry.size;
        const bool below = neighbour.address + neighbour.size == entry.address;
        if (above || below) {
            if (below) {
                entry.address = neighbour.address;
            }
            entry.size += neighbour.size;
            removeEntry(freeBlocks, other);
            return;
        }
    }
}

}  // namespace

void* coreAlloc(std::uint64_t size, std::uint64_t flags) {
    // Entry 0 is never used, so the table is full before the count says so.
    const std::size_t place = tableEnd(usedBlocks, 1);
    if (usedCount >= usedBlocks.size() || place == usedBlocks.size()) {
        return hostAlloc(static_cast<std::uint32_t>(size));
    }
    const std::uint64_t rounded = (size + 7) & ~std::uint64_t{7};
    std::byte* address = carve(rounded);
    if (address == nullptr) {
        return hostAlloc(static_cast<std::uint32_t>(size));
    }
    usedBlocks[place] = {address, rounded};
    ++usedCount;
    if ((flags & coreAllocZero) != 0) {
        std::memset(address, 0, rounded);
    }
    return address;
}

void coreFree(void* block) {
    if (usedCount == 0) {
        hostFree(block);
        return;
    }
    const std::size_t end = tableEnd(usedBlocks, 1);
    std::size_t index = 1;
    while (index < end && usedBlocks[index].address != block) {
        ++index;
    }
    if (index == end) {
        hostFree(block);
        return;
    }
    const CoreBlock released = usedBlocks[index];
    removeEntry(usedBlocks, index);
    takeBack(released);
    --usedCount;
    ++releaseCount;
    if (releaseCount > releasesBeforeCompaction) {
        coreCompact();
    }
}

void coreCompact() {
    for (std::size_t i = 0; i < freeBlocks.size() && freeBlocks[i].address != nullptr; ++i) {
        joinOneNeighbour(i);
    }
}

}  // namespace core
