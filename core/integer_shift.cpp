#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "core/verify.h"

namespace core {

void integerShiftLeft(CoreInteger& value, std::uint64_t count) {
    verify(integerIsSound(value) &&
           (integerIsZero(value) || integerBitLength(value) + count <= limbBits * integerLimbRoom));
    const std::uint32_t oldCount = integerLimbCount(value);
    if (oldCount == 0) {
        return;
    }
    const auto places = static_cast<std::uint32_t>(count / limbBits);
    const auto bits = static_cast<unsigned>(count % limbBits);
    std::uint32_t newCount = oldCount + places;
    if (bits != 0) {
        const std::uint64_t spill = value.limbs[oldCount - 1] >> (limbBits - bits);
        if (spill != 0) {
            value.limbs[newCount] = spill;
            ++newCount;
        }
    }
    for (std::uint32_t i = oldCount; i-- > 0;) {
        std::uint64_t limb = value.limbs[i] << bits;
        if (bits != 0 && i > 0) {
            limb |= value.limbs[i - 1] >> (limbBits - bits);
        }
        value.limbs[i + places] = limb;
    }
    for (std::uint32_t i = 0; i < places; ++i) {
        value.limbs[i] = 0;
    }
    integerTrim(value, newCount);
}

void integerShiftRight(CoreInteger& value, std::uint64_t count) {
    verify(integerIsSound(value));
    const std::uint64_t bitLength = integerBitLength(value);
    if (bitLength <= count) {
        integerClear(value);
        return;
    }
    const std::uint32_t oldCount = integerLimbCount(value);
    const auto places = static_cast<std::uint32_t>(count / limbBits);
    const auto bits = static_cast<unsigned>(count % limbBits);
    for (std::uint32_t i = 0; i < oldCount; ++i) {
        const std::uint32_t source = i + places;
        std::uint64_t limb = source < oldCount ? value.limbs[source] >> bits : 0;
        if (bits != 0 && source + 1 < oldCount) {
            limb |= value.limbs[source + 1] << (limbBits - bits);
        }
        value.limbs[i] = limb;
    }
    const std::uint32_t sign = value.lengthAndSign & integerSignBit;
    value.lengthAndSign =
        static_cast<std::uint32_t>((bitLength - count + limbBits - 1) / limbBits) | sign;
}

void integerTruncate(CoreInteger& value, std::uint64_t count) {
    verify(integerIsSound(value) && count <= limbBits * integerLimbRoom);
    if (integerIsZero(value)) {
        return;
    }
    auto limbs = static_cast<std::uint32_t>((count + limbBits - 1) / limbBits);
    for (std::uint32_t i = limbs; i < integerLimbCount(value); ++i) {
        value.limbs[i] = 0;
    }
    const auto topBits = static_cast<unsigned>(count % limbBits);
    if (topBits != 0) {
        value.limbs[limbs - 1] &= (std::uint64_t{1} << topBits) - 1;
        if (value.limbs[limbs - 1] == 0) {
            --limbs;
        }
    }
    value.lengthAndSign = limbs;
}

}  // namespace core
