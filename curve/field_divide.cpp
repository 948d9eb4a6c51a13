#include <algorithm>
#include <bit>

#include "core/verify.h"
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

/// The low `words` words of value := value / z^count, for a count from 1 to 63.
template <std::size_t words>
inline void shiftRight163(Words163& value, unsigned count) {
    for (std::size_t i = 0; i + 1 < words; ++i) {
        value[i] = value[i] >> count | value[i + 1] << (64 - count);
    }
    value[words - 1] >>= count;
}

/// factor := factor / z^count modulo f, for a count from 1 to stepLimit163.
inline void divideByPower163(Words163& factor, unsigned count) {
    // factor + q * f is a multiple of z^count for q = factor / f modulo z^count, and
    // 1 / f = 1 + z^3 + z^7 + z^9 modulo z^12.
    const std::uint64_t low = factor[0];
    const std::uint64_t q =
        (low ^ low << 3 ^ low << 7 ^ low << 9) & ((std::uint64_t{1} << count) - 1);
    factor[0] ^= q ^ q << 3 ^ q << 6 ^ q << 7;
    factor[2] ^= q << topBits163;
    shiftRight163<words163>(factor, count);
}

/// Operands of the division of a by b: b * g1 = a * u and b * g2 = a * v modulo f, and v is odd.
struct Division163 {
    Words163 u;
    Words163 v;
    Words163 g1;
    Words163 g2;
};

/// Runs the division until u and v fit in less than `words` words or, with one word, u is 1.
///
/// Several factors of z go at once, and a mask decides which of u and v is replaced by their sum,
/// for a branch would be mispredicted every other time. The top words decide it: where they are
/// equal the sum has a lower degree than either. Loops over a number of words that is known at
/// compile time, smaller as u and v become shorter, take a quarter less time.
template <std::size_t words>
inline void divideWhileIn163(Division163& d) {
    while (true) {
        while ((d.u[0] & 1) == 0) {
            const auto zeros = static_cast<unsigned>(std::countr_zero(d.u[0]));
            const unsigned count = std::min(zeros, stepLimit163);
            shiftRight163<words>(d.u, count);
            divideByPower163(d.g1, count);
        }
        if (words == 1 ? d.u[0] == 1 : (d.u[words - 1] | d.v[words - 1]) == 0) {
            return;
        }
        // v := the lower of u and v, u := u + v, and likewise their factors.
        const std::uint64_t lower = d.u[words - 1] < d.v[words - 1] ? ~std::uint64_t{0} : 0;
        for (std::size_t i = 0; i < words; ++i) {
            const std::uint64_t sum = d.u[i] ^ d.v[i];
            d.v[i] ^= sum & lower;
            d.u[i] = sum;
        }
        for (std::size_t i = 0; i < words163; ++i) {
            const std::uint64_t sum = d.g1[i] ^ d.g2[i];
            d.g2[i] ^= sum & lower;
            d.g1[i] = sum;
        }
    }
}

/// a / b for reduced operands of degree 163, b not zero: the same algorithm, with v odd from the
/// start. u and v end at 1.
Words163 divide163(const Words163& a, const Words163& b) {
    Division163 d = {
        .u = b, .v = {lowTerms163, 0, std::uint64_t{1} << topBits163}, .g1 = a, .g2 = {}};
    divideWhileIn163<3>(d);
    divideWhileIn163<2>(d);
    divideWhileIn163<1>(d);
    return d.g1;
}

}  // namespace

void fieldDivide(const FieldElement& a, const FieldElement& b, FieldElement& out,
                 const FieldElement& f) {
    verify(a.degree == f.degree && b.degree == f.degree && f.degree % 64 != 0 &&
           fieldWords(f.degree) < fieldWordRoom);
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
