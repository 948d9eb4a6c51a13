#include "fuzz/integer_operands.h"

#include <algorithm>

namespace {

FuzzInteger integerOf(const BigNumber& number, std::uint32_t zeroLimbs) {
    FuzzInteger integer{.value = number.toInteger(), .number = number};
    integer.value.lengthAndSign += zeroLimbs;
    return integer;
}

}  // namespace

FuzzOperands::FuzzOperands(InputReader& input, std::uint32_t limbs) {
    const unsigned head = input.byte();
    const std::size_t share = input.byte();
    const std::size_t room = limbs * sizeof(std::uint64_t);
    BigNumber first = BigNumber::fromBytes(input.bytes(std::min(room, share)));
    const BigNumber second = BigNumber::fromBytes(input.bytes(room));
    constexpr unsigned multiple = 16;
    if ((head & multiple) != 0) {
        first = first * second + (head >> 5);
        first = first < BigNumber(4) ? first : first - 4;
    }
    const std::uint32_t zeroOfA = head & 3;
    const std::uint32_t zeroOfB = head >> 2 & 3;
    a = integerOf(first, zeroOfA);
    b = integerOf(second, zeroOfB);
}

bool FuzzOperands::below() const {
    const std::uint32_t limbsOfA = a.value.lengthAndSign;
    const std::uint32_t limbsOfB = b.value.lengthAndSign;
    return limbsOfA == limbsOfB ? a.number < b.number : limbsOfA < limbsOfB;
}

core::CoreInteger usedInteger() {
    core::CoreInteger used;
    used.capacity = core::integerLimbRoom;
    used.lengthAndSign = 5 | core::integerSignBit;
    std::fill_n(used.limbs.begin(), 5, 0xA5A5A5A5A5A5A5A5);
    return used;
}

bool isNormal(const core::CoreInteger& value, const BigNumber& expected) {
    const core::CoreInteger normal = expected.toInteger();
    return value.lengthAndSign == normal.lengthAndSign && value.limbs == normal.limbs;
}

bool isUnchanged(const core::CoreInteger& value, const core::CoreInteger& before) {
    return value.lengthAndSign == before.lengthAndSign && value.capacity == before.capacity &&
           value.limbs == before.limbs;
}
