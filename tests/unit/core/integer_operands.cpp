#include "tests/unit/core/integer_operands.h"

#include <algorithm>

#include "tests/support/random_operands.h"

namespace {

constexpr std::uint64_t allOnes = ~std::uint64_t{0};

std::uint64_t randomLimb() {
    switch (randomBelow(8)) {
        case 0:
            return 0;
        case 1:
            return allOnes;
        case 2:
            return std::uint64_t{1} << randomBelow(64);
        default:
            return testRandom()();
    }
}

}  // namespace

std::vector<BigNumber> edgeNumbers(std::uint32_t limbs) {
    std::vector<BigNumber> numbers = {0, 1, 2, 3, 255, 256};
    for (std::uint32_t count = 1; count <= limbs; ++count) {
        const BigNumber power = BigNumber::powerOfTwo(std::uint64_t{64} * count);
        const BigNumber half = power >> 1;
        numbers.push_back(power - 1);
        numbers.push_back(half);
        numbers.push_back(half - 1);
        if (count < limbs) {
            numbers.push_back(power);
            numbers.push_back(power + 1);
        }
        std::vector<std::uint64_t> alternating(count);
        for (std::uint32_t i = 0; i < count; ++i) {
            alternating[i] = (count - i) % 2 == 0 ? 0 : allOnes;
        }
        numbers.push_back(BigNumber::fromLimbs(alternating));
    }
    return numbers;
}

BigNumber randomNumber(std::uint32_t limbs) {
    std::vector<std::uint64_t> values(1 + randomBelow(limbs));
    std::ranges::generate(values, randomLimb);
    return BigNumber::fromLimbs(values);
}

BigNumber withSign(const BigNumber& magnitude, unsigned signs) {
    return (signs & 1) != 0 ? -magnitude : magnitude;
}

core::CoreInteger withZeroTop(core::CoreInteger value, std::uint32_t zeroLimbs) {
    value.lengthAndSign += zeroLimbs;
    return value;
}

core::CoreInteger rawInteger(const std::vector<std::uint64_t>& limbs) {
    core::CoreInteger value;
    value.lengthAndSign = static_cast<std::uint32_t>(limbs.size());
    value.capacity = core::integerLimbRoom;
    std::ranges::copy(limbs, value.limbs.begin());
    return value;
}

core::CoreInteger usedResult() {
    return withSign(randomNumber(60), static_cast<unsigned>(randomBelow(2))).toInteger();
}

testing::AssertionResult isNormalValue(const core::CoreInteger& value, const BigNumber& expected) {
    const core::CoreInteger normal = expected.toInteger();
    if (value.lengthAndSign != normal.lengthAndSign) {
        return testing::AssertionFailure()
               << "word " << std::hex << value.lengthAndSign << " instead of "
               << normal.lengthAndSign << ", value " << BigNumber::fromInteger(value)
               << " instead of " << expected;
    }
    for (std::uint32_t i = 0; i < core::integerLimbRoom; ++i) {
        if (value.limbs[i] != normal.limbs[i]) {
            return testing::AssertionFailure()
                   << "limb " << i << " is " << std::hex << value.limbs[i] << " instead of "
                   << normal.limbs[i] << ", value " << expected;
        }
    }
    return testing::AssertionSuccess();
}

bool isSame(const core::CoreInteger& a, const core::CoreInteger& b) {
    return a.lengthAndSign == b.lengthAndSign && a.capacity == b.capacity && a.limbs == b.limbs;
}
