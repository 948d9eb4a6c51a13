#pragma once

#include <cstddef>
#include <cstdint>

#include "curve/field_163.h"

namespace core {

/// Products by plain 64-bit instructions. Multiplication looks bits of its first operand up in a
/// table; squaring has no address that depends on its operand.
struct PlainProducts {
    static Product163 multiply(const Words163& a, const Words163& b) { return multiply163(a, b); }

    static constexpr Product163 square(const Words163& a) {
        Product163 out{};
        for (std::size_t i = 0; i < words163; ++i) {
            out[2 * i] = spread(a[i] & 0xFFFFFFFF);
            out[2 * i + 1] = spread(a[i] >> 32);
        }
        return out;
    }

private:
    /// The low 32 bits with a zero between each two.
    static constexpr std::uint64_t spread(std::uint64_t half) {
        half = (half | half << 16) & 0x0000FFFF0000FFFF;
        half = (half | half << 8) & 0x00FF00FF00FF00FF;
        half = (half | half << 4) & 0x0F0F0F0F0F0F0F0F;
        half = (half | half << 2) & 0x3333333333333333;
        return (half | half << 1) & 0x5555555555555555;
    }
};

}  // namespace core
