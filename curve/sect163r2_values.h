#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "curve/field_163.h"

namespace core {

consteval std::uint64_t digitValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return static_cast<std::uint64_t>(digit - '0');
    }
    if (digit >= 'A' && digit <= 'F') {
        return static_cast<std::uint64_t>(digit - 'A') + 10;
    }
    throw "no hexadecimal digit";
}

/// The element of degree 163 with these hexadecimal digits, most significant first.
consteval FieldElement fieldConstant(std::string_view digits) {
    FieldElement e{.degree = degree163, .capacity = 2 * sizeof(Words163)};
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const std::size_t position = 4 * (digits.size() - 1 - i);
        e.words[position / 64] |= digitValue(digits[i]) << position % 64;
    }
    return e;
}

/// The published values, as elements: SEC 2 version 2.0, section 3.2.
namespace sect163r2Values {

// z^163 + z^7 + z^6 + z^3 + 1, a, b, G, n and h.
inline constexpr FieldElement reductionPolynomial =
    fieldConstant("800000000000000000000000000000000000000C9");
inline constexpr FieldElement coefficientA = fieldConstant("1");
inline constexpr FieldElement coefficientB =
    fieldConstant("20A601907B8C953CA1481EB10512F78744A3205FD");
inline constexpr FieldElement basePointX =
    fieldConstant("3F0EBA16286A2D57EA0991168D4994637E8343E36");
inline constexpr FieldElement basePointY =
    fieldConstant("D51FBC6C71A0094FA2CDD545B11C5C0C797324F1");
inline constexpr FieldElement order = fieldConstant("40000000000000000000292FE77E70C12A4234C33");
inline constexpr FieldElement cofactor = fieldConstant("2");

static_assert(isPolynomial163(reductionPolynomial));
static_assert(order.words[0] == 0x77E70C12A4234C33 && order.words[1] == 0x292FE &&
              order.words[2] == 0x400000000);

}  // namespace sect163r2Values

}  // namespace core
