#include <algorithm>
#include <bit>

#include "curve/field.h"
#include "curve/field_163.h"

namespace core {

namespace {

/// Divides `value` by z until it is odd, and `factor` modulo f with it. `value` must not be zero.
void removeFactorsOfZ(FieldElement& value, FieldElement& factor, const FieldElement& f) {
    while ((value.words[0] & 1) == 0) {
        fieldShiftRightOne(value);
        if ((factor.words[0] & 1) != 0) {
            fieldAddTo(factor, f);
        }
        fieldShiftRightOne(factor);
    }
}

/// Any degree and any f, one bit at a time.
void divideBitwise(const FieldElement& a, const FieldElement& b, FieldElement& out,
                   const FieldElement& f) {
    // Guide to Elliptic Curve Cryptography, algorithm 2.49, begun with a where it has 1:
    // throughout, b * g1 = a * u and b * g2 = a * v modulo f.
    const std::uint64_t degree = f.degree;
    const FieldTemporary u(fieldNew(degree));
    const FieldTemporary v(fieldNew(degree));
    const FieldTemporary g1(fieldNew(degree));
    const FieldTemporary g2(fieldNew(degree));
    fieldCopy(b, *u);
    fieldCopy(f, *v);
    fieldCopy(a, *g1);

    while (!fieldIsOne(*u) && !fieldIsOne(*v)) {
        if (fieldIsZero(*u) || fieldIsZero(*v)) {
            // b shares the factor f with f: there is no quotient.
            fieldClear(*g1);
            fieldCopy(*g1, out);
            return;
        }
        removeFactorsOfZ(*u, *g1, f);
        removeFactorsOfZ(*v, *g2, f);
        if (fieldDegree(*u) > fieldDegree(*v)) {
            fieldAddTo(*u, *v);
            fieldAddTo(*g1, *g2);
        } else {
            fieldAddTo(*v, *u);
            fieldAddTo(*g2, *g1);
        }
    }
    fieldCopy(fieldIsOne(*u) ? *g1 : *g2, out);
}

/// Factors of z that one step removes.
constexpr unsigned stepLimit163 = 12;

/// value := value / z^count, for a count from 1 to 63.
void shiftRight163(Words163& value, unsigned count) {
    value[0] = value[0] >> count | value[1] << (64 - count);
    value[1] = value[1] >> count | value[2] << (64 - count);
    value[2] >>= count;
}

/// factor := factor / z^count modulo f, for a count from 1 to stepLimit163.
void divideByPower163(Words163& factor, unsigned count) {
    // factor + q * f is a multiple of z^count for q = factor / f modulo z^count, and
    // 1 / f = 1 + z^3 + z^7 + z^9 modulo z^12.
    const std::uint64_t low = factor[0];
    const std::uint64_t q =
        (low ^ low << 3 ^ low << 7 ^ low << 9) & ((std::uint64_t{1} << count) - 1);
    factor[0] ^= q ^ q << 3 ^ q << 6 ^ q << 7;
    factor[2] ^= q << topBits163;
    shiftRight163(factor, count);
}

/// All ones if a < b as numbers, else 0.
std::uint64_t maskOfLess163(const Words163& a, const Words163& b) {
    std::uint64_t borrow = 0;
    for (std::size_t i = 0; i < words163; ++i) {
        borrow = (a[i] < b[i]) | ((a[i] == b[i]) & borrow);
    }
    return std::uint64_t{0} - borrow;
}

/// Reduced operands of degree 163, b not zero.
///
/// The same algorithm, with v odd from the start. Several factors of z go at once, and which of u
/// and v is replaced by their sum is decided by a mask: a branch would be mispredicted every other
/// time. The larger number never has the lower degree, so that both stay reduced and u ends at 1.
Words163 divide163(const Words163& a, const Words163& b) {
    Words163 u = b;
    Words163 v = {lowTerms163, 0, std::uint64_t{1} << topBits163};
    Words163 g1 = a;
    Words163 g2 = {};
    while (true) {
        while ((u[0] & 1) == 0) {
            const auto zeros = static_cast<unsigned>(std::countr_zero(u[0]));
            const unsigned count = std::min(zeros, stepLimit163);
            shiftRight163(u, count);
            divideByPower163(g1, count);
        }
        if (u[0] == 1 && (u[1] | u[2]) == 0) {
            return g1;
        }
        // v := min(u, v), u := u + v, and likewise their factors.
        const std::uint64_t less = maskOfLess163(u, v);
        for (std::size_t i = 0; i < words163; ++i) {
            const std::uint64_t sum = u[i] ^ v[i];
            const std::uint64_t sumOfFactors = g1[i] ^ g2[i];
            v[i] ^= sum & less;
            g2[i] ^= sumOfFactors & less;
            u[i] = sum;
            g1[i] = sumOfFactors;
        }
    }
}

}  // namespace

void fieldDivide(const FieldElement& a, const FieldElement& b, FieldElement& out,
                 const FieldElement& f) {
    if (!isPolynomial163(f) || !isReduced163(a) || !isReduced163(b) || fieldIsZero(b)) {
        divideBitwise(a, b, out, f);
        return;
    }
    const Words163 quotient = divide163(load163(a), load163(b));
    FieldElement result{.degree = f.degree, .capacity = 2 * sizeof quotient};
    std::copy(quotient.begin(), quotient.end(), result.words.begin());
    fieldCopy(result, out);
}

}  // namespace core
