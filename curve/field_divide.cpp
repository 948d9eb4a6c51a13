#include "curve/field.h"

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

}  // namespace

void fieldDivide(const FieldElement& a, const FieldElement& b, FieldElement& out,
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

}  // namespace core
