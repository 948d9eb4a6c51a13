// Property: the quotient of two reduced elements of GF(2^163), and of other binary fields of
// published curves, is libcrypto's, with zero for a zero divisor; that holds for every capacity of
// the program, and with the result in the place of either operand. Nothing above the capacity is
// written.

#include <algorithm>
#include <array>

#include "curve/field.h"
#include "fuzz/input_reader.h"
#include "fuzz/property.h"
#include "tests/support/field_judge.h"

namespace {

/// The fields of SEC 2 version 1.0 and 2.0 that elements have room for, and a small one.
const std::array<FieldJudge, 8>& fields() {
    static const std::array<FieldJudge, 8> judges = {
        FieldJudge(polynomialOf({163, 7, 6, 3, 0})), FieldJudge(polynomialOf({113, 9, 0})),
        FieldJudge(polynomialOf({131, 8, 3, 2, 0})), FieldJudge(polynomialOf({193, 15, 0})),
        FieldJudge(polynomialOf({233, 74, 0})),      FieldJudge(polynomialOf({239, 158, 0})),
        FieldJudge(polynomialOf({409, 87, 0})),      FieldJudge(polynomialOf({7, 1, 0}))};
    return judges;
}

constexpr std::uint64_t pattern = 0xC3A5C3A5C3A5C3A5;

/// An element of this value, with a pattern above its capacity.
core::FieldElement guardedElement(const BigNumber& value, std::uint64_t degree,
                                  std::uint64_t capacity) {
    core::FieldElement e = elementFrom(value, degree, capacity);
    std::fill(e.words.begin() + capacity / sizeof(std::uint64_t), e.words.end(), pattern);
    return e;
}

void checkResult(const core::FieldElement& out, const BigNumber& expected, std::uint64_t degree,
                 std::uint64_t capacity) {
    require(valueOf(out) == expected, "the quotient is libcrypto's");
    require(out.degree == degree && out.capacity == capacity, "degree and capacity stand");
    require(std::all_of(out.words.begin() + capacity / sizeof(std::uint64_t), out.words.end(),
                        [](std::uint64_t word) { return word == pattern; }),
            "nothing above the capacity is written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const unsigned head = input.byte();
    // The program's own field has half of the numbers.
    const FieldJudge& field = fields()[head % 16 < 8 ? 0 : head % 8];
    const std::uint64_t degree = field.polynomial().bitLength() - 1;
    const std::uint64_t words = (degree + 63) / 64;
    const std::uint64_t capacity =
        degree == curveDegree ? programCapacities[head / 16 % 3]
                              : std::min<std::uint64_t>(16 * words, 8 * core::fieldWordRoom);
    const BigNumber limit = BigNumber::powerOfTwo(degree);
    const BigNumber a = BigNumber::fromBytes(input.bytes(8 * words)) % limit;
    const BigNumber b = BigNumber::fromBytes(input.bytes(8 * words)) % limit;
    const BigNumber expected = b.isZero() ? BigNumber(0) : field.divide(a, b);

    const core::FieldElement f = elementFrom(field.polynomial(), degree, capacity);
    core::FieldElement numerator = guardedElement(a, degree, capacity);
    core::FieldElement divisor = guardedElement(b, degree, capacity);
    core::FieldElement out = guardedElement(limit - 1, degree, capacity);
    switch (head / 64) {
        case 0:
            core::fieldDivide(numerator, divisor, numerator, f);
            checkResult(numerator, expected, degree, capacity);
            break;
        case 1:
            core::fieldDivide(numerator, divisor, divisor, f);
            checkResult(divisor, expected, degree, capacity);
            break;
        default:
            core::fieldDivide(numerator, divisor, out, f);
            checkResult(out, expected, degree, capacity);
            checkResult(numerator, a, degree, capacity);
            checkResult(divisor, b, degree, capacity);
    }
    return 0;
}
