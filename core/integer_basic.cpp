#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "core/little_endian.h"
#include "core/memory.h"

namespace core {

namespace {

constexpr std::uint64_t limbBytes = 8;

std::uint64_t topLimb(const CoreInteger& value) {
    return value.limbs[integerLimbCount(value) - 1];
}

}  // namespace

CoreInteger* integerAlloc(std::uint64_t bits) {
    auto* value = new (coreAlloc(sizeof(CoreInteger), coreAllocZero)) CoreInteger;
    value->capacity = static_cast<std::uint32_t>((bits + limbBits - 1) / limbBits);
    return value;
}

void integerRelease(CoreInteger* value) {
    coreFree(value);
}

void integerClear(CoreInteger& value) {
    value.lengthAndSign = 0;
    std::fill_n(value.limbs.begin(), value.capacity, 0);
}

void integerCopy(const CoreInteger& source, CoreInteger& destination) {
    if (source.lengthAndSign == 0) {
        integerClear(destination);
        return;
    }
    const std::uint32_t oldCount = integerLimbCount(destination);
    const std::uint32_t newCount = integerLimbCount(source);
    destination.lengthAndSign = source.lengthAndSign;
    std::copy_n(source.limbs.begin(), newCount, destination.limbs.begin());
    for (std::uint32_t i = newCount; i < oldCount; ++i) {
        destination.limbs[i] = 0;
    }
}

bool integerIsZero(const CoreInteger& value) {
    return value.lengthAndSign == 0;
}

std::int64_t integerCompare(const CoreInteger& a, const CoreInteger& b) {
    if (&a == &b) {
        return 0;
    }
    if (integerIsNegative(a) != integerIsNegative(b)) {
        return integerIsNegative(a) ? -1 : 1;
    }
    if (!integerIsNegative(a)) {
        return compareMagnitudes(a, b);
    }
    for (std::uint32_t i = integerLimbCount(a); i-- > 0;) {
        if (a.limbs[i] != b.limbs[i]) {
            return b.limbs[i] < a.limbs[i] ? -1 : 1;
        }
    }
    return 0;
}

std::uint64_t integerBitLength(const CoreInteger& value) {
    if (integerLimbCount(value) == 0) {
        return 0;
    }
    const auto topBits = static_cast<std::uint64_t>(std::bit_width(topLimb(value)));
    return limbBits * (integerLimbCount(value) - 1) + topBits;
}

std::uint64_t integerByteLength(const CoreInteger& value) {
    if (integerLimbCount(value) == 0) {
        return 0;
    }
    const auto topBits = static_cast<std::uint64_t>(std::bit_width(topLimb(value) | 1));
    return limbBytes * (integerLimbCount(value) - 1) + (topBits - 1) / 8 + 1;
}

std::uint64_t* integerLimbs(CoreInteger& value) {
    return value.limbs.data();
}

void integerImport(const std::uint8_t* stored, CoreInteger& value) {
    const std::uint64_t bits = loadLittle32(stored) & ~integerSignBit;
    if (bits == 0) {
        return;
    }
    const std::uint64_t bytes = (bits + 7) / 8;
    value.lengthAndSign = static_cast<std::uint32_t>((bytes + limbBytes - 1) / limbBytes);
    std::memcpy(value.limbs.data(), stored + sizeof(std::uint32_t), bytes);
}

void integerNormalise(CoreInteger& value) {
    const std::uint32_t limbs = integerLimbCount(value);
    value.lengthAndSign = 0;
    integerTrim(value, limbs);
}

}  // namespace core
