#include "core/hash_message.h"

#include <array>
#include <cstring>

namespace core {

void hashMessage(std::uint32_t* state, const std::uint8_t* data, std::uint64_t length,
                 HashBlockFunction runBlocks, LengthOrder order) {
    const std::uint64_t wholeBlocks = (length & 0xFFFFFFFF) / hashBlockSize;
    if (wholeBlocks != 0) {
        runBlocks(state, data, wholeBlocks);
    }

    const std::size_t remaining = length % hashBlockSize;
    std::array<std::uint8_t, 2 * hashBlockSize> tail{};
    if (remaining != 0) {
        std::memcpy(tail.data(), data + wholeBlocks * hashBlockSize, remaining);
    }
    tail[remaining] = 0x80;
    constexpr std::size_t lengthFieldSize = 8;
    const std::size_t tailBlocks = remaining < hashBlockSize - lengthFieldSize ? 1 : 2;
    const std::size_t lengthField = tailBlocks * hashBlockSize - lengthFieldSize;
    const std::uint64_t bitCount = length << 3;
    for (std::size_t i = 0; i < lengthFieldSize; ++i) {
        const std::size_t place = order == LengthOrder::littleEndian ? i : lengthFieldSize - 1 - i;
        tail[lengthField + place] = static_cast<std::uint8_t>(bitCount >> 8 * i);
    }
    runBlocks(state, tail.data(), tailBlocks);
}

}  // namespace core
