#include "curve/field.h"
#include "curve/point.h"

namespace core {

void pointNew(std::uint64_t degree, CurvePoint& P) {
    P.x = fieldNew(degree);
    P.y = fieldNew(degree);
    P.flags = 0;
}

void pointRelease(CurvePoint& P) {
    fieldRelease(P.y);
    fieldRelease(P.x);
    P = {};
}

void pointCopy(const CurvePoint& P, CurvePoint& out) {
    out.flags = P.flags;
    if (!pointIsInfinity(P)) {
        fieldCopy(*P.x, *out.x);
        fieldCopy(*P.y, *out.y);
    }
}

void pointNegate(CurvePoint& P) {
    if (!pointIsInfinity(P)) {
        fieldAddTo(*P.y, *P.x);
    }
}

int pointCompare(const CurvePoint& P, const CurvePoint& Q) {
    if (pointIsInfinity(P)) {
        return pointIsInfinity(Q) ? 1 : 0;
    }
    if (pointIsInfinity(Q) || fieldCompare(*P.x, *Q.x) != 0) {
        return 0;
    }
    const std::size_t words = fieldWords(P.y->degree);
    for (std::size_t i = 0; i < words; ++i) {
        const std::uint64_t same = P.y->words[i];
        const std::uint64_t negated = same ^ P.x->words[i];
        if (Q.y->words[i] != same && Q.y->words[i] != negated) {
            return 0;
        }
    }
    return Q.y->words[words - 1] == P.y->words[words - 1] ? 1 : -1;
}

}  // namespace core
