#include "tests/support/field_judge.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "tests/support/random_operands.h"

namespace {

void require(int done) {
    if (done != 1) {
        throw std::runtime_error("libcrypto refused a polynomial");
    }
}

BigNumber numberOfWords(const core::FieldElement& e, std::uint64_t count) {
    return BigNumber::fromLimbs({e.words.begin(), e.words.begin() + count});
}

BigNumber allOnes(std::uint64_t bits) {
    return BigNumber::powerOfTwo(bits) - 1;
}

}  // namespace

BigNumber curvePolynomial() {
    return polynomialOf({163, 7, 6, 3, 0});
}

core::FieldElement elementFrom(const BigNumber& value, std::uint64_t degree,
                               std::uint64_t capacity) {
    const core::CoreInteger limbs =
        value.toInteger(static_cast<std::uint32_t>(capacity / sizeof(std::uint64_t)));
    core::FieldElement e{.degree = degree, .capacity = capacity, .words = {}};
    std::copy_n(limbs.limbs.begin(), limbs.lengthAndSign, e.words.begin());
    return e;
}

BigNumber valueOf(const core::FieldElement& e) {
    return numberOfWords(e, (e.degree + 63) / 64);
}

BigNumber contentOf(const core::FieldElement& e) {
    return numberOfWords(e, e.capacity / sizeof(std::uint64_t));
}

core::FieldElement usedElement(std::uint64_t degree, std::uint64_t capacity) {
    core::FieldElement e{.degree = degree, .capacity = capacity, .words = {}};
    std::generate(e.words.begin(), e.words.end(), testRandom());
    return e;
}

BigNumber randomPolynomial(std::uint64_t bits) {
    const BigNumber limit = BigNumber::powerOfTwo(bits);
    switch (randomBelow(4)) {
        case 0: {
            BigNumber sparse;
            for (std::uint64_t terms = randomBelow(6); terms > 0; --terms) {
                sparse = polynomialSum(sparse, BigNumber::powerOfTwo(randomBelow(bits)));
            }
            return sparse;
        }
        case 1:
            return BigNumber::fromBytes(randomBytes(bits / 8 + 1)) %
                   BigNumber::powerOfTwo(1 + randomBelow(bits));
        default:
            return BigNumber::fromBytes(randomBytes(bits / 8 + 1)) % limit;
    }
}

std::vector<BigNumber> edgePolynomials(std::uint64_t bits) {
    const BigNumber ones = allOnes(bits);
    const BigNumber top = BigNumber::powerOfTwo(bits - 1);
    std::vector<BigNumber> edges = {0, 1, top, ones, ones - 1, top + 1, ones - top};
    for (std::uint64_t exponent = 1; exponent < bits - 1; ++exponent) {
        const std::uint64_t inWord = exponent % 32;
        if (inWord <= 1 || inWord == 31 || exponent + 4 > bits) {
            edges.push_back(BigNumber::powerOfTwo(exponent));
            edges.push_back(BigNumber::powerOfTwo(exponent) + 1);
            edges.push_back(allOnes(exponent));
            edges.push_back(ones - allOnes(exponent));
        }
    }
    // Every second and every third coefficient.
    edges.push_back(ones / 3);
    edges.push_back(ones - ones / 3);
    edges.push_back(ones / 7);
    return edges;
}

BigNumber polynomialOf(const std::vector<std::uint64_t>& exponents) {
    BigNumber sum;
    for (const std::uint64_t exponent : exponents) {
        sum = polynomialSum(sum, BigNumber::powerOfTwo(exponent));
    }
    return sum;
}

BigNumber polynomialProduct(const BigNumber& a, const BigNumber& b) {
    BigNumber product;
    for (std::uint64_t bit = 0; bit < a.bitLength(); ++bit) {
        if (BN_is_bit_set(a.get(), static_cast<int>(bit)) == 1) {
            product = polynomialSum(product, b << bit);
        }
    }
    return product;
}

BigNumber polynomialSum(const BigNumber& a, const BigNumber& b) {
    BigNumber sum;
    require(BN_GF2m_add(sum.get(), a.get(), b.get()));
    return sum;
}

BigNumber longDivisionRemainder(BigNumber dividend, const BigNumber& divisor) {
    while (dividend.bitLength() >= divisor.bitLength()) {
        dividend = polynomialSum(dividend, divisor << (dividend.bitLength() - divisor.bitLength()));
    }
    return dividend;
}

BigNumber FieldJudge::reduce(const BigNumber& a) const {
    BigNumber result;
    require(BN_GF2m_mod(result.get(), a.get(), polynomial_.get()));
    return result;
}

BigNumber FieldJudge::multiply(const BigNumber& a, const BigNumber& b) const {
    BigNumber result;
    require(BN_GF2m_mod_mul(result.get(), a.get(), b.get(), polynomial_.get(), numberContext()));
    return result;
}

BigNumber FieldJudge::square(const BigNumber& a) const {
    BigNumber result;
    require(BN_GF2m_mod_sqr(result.get(), a.get(), polynomial_.get(), numberContext()));
    return result;
}

BigNumber FieldJudge::divide(const BigNumber& a, const BigNumber& b) const {
    BigNumber result;
    require(BN_GF2m_mod_div(result.get(), a.get(), b.get(), polynomial_.get(), numberContext()));
    return result;
}
