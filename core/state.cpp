#include "core/state.h"

#include "core/host.h"

namespace core {

std::byte* coreArena = nullptr;
BlockTable usedBlocks;
BlockTable freeBlocks;
std::uint32_t usedCount = 0;
std::uint32_t releaseCount = 0;
std::array<std::uint16_t, 256> squareSpreadTable;

namespace {

consteval std::array<std::uint16_t, 256> makeSpreadTable() {
    std::array<std::uint16_t, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        std::size_t spread = 0;
        for (unsigned bit = 0; bit < 8; ++bit) {
            spread |= (byte >> bit & 1) << 2 * bit;
        }
        table[byte] = static_cast<std::uint16_t>(spread);
    }
    return table;
}

constexpr std::array<std::uint16_t, 256> spreadTable = makeSpreadTable();

}  // namespace

void coreStart() {
    usedCount = 0;
    releaseCount = 0;
    coreArena = static_cast<std::byte*>(hostAlloc(coreArenaSize));
    freeBlocks[0].address = coreArena;
    squareSpreadTable = spreadTable;
}

void coreStop() {
    hostFree(coreArena);
    usedCount = 0;
    usedBlocks = {};
    freeBlocks = {};
    coreArena = nullptr;
}

}  // namespace core
