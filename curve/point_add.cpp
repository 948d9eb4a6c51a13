#include "curve/field.h"
#include "curve/point.h"

namespace core {

void pointAdd(const CurvePoint& P, const CurvePoint& Q, const CurveCoefficients& curve,
              CurvePoint& out, const FieldElement& f) {
    if (pointIsInfinity(P)) {
        pointCopy(Q, out);
        return;
    }
    if (pointIsInfinity(Q)) {
        pointCopy(P, out);
        return;
    }
    const int comparison = pointCompare(P, Q);
    if (comparison == 1) {
        pointDouble(P, curve, out, f);
        return;
    }
    if (comparison == -1) {
        out.flags |= pointInfinity;
        return;
    }
    out.flags &= ~pointInfinity;

    const std::uint64_t degree = P.x->degree;
    const FieldTemporary lambda(fieldNew(degree));
    const FieldTemporary sum(fieldNew(degree));
    const FieldTemporary product(fieldNew(degree));

    // lambda = (y1 + y2) / (x1 + x2); x3 = lambda^2 + lambda + x1 + x2 + a.
    fieldAdd(*P.x, *Q.x, *out.x);
    fieldAdd(*P.y, *Q.y, *sum);
    fieldDivide(*sum, *out.x, *lambda, f);
    fieldSquare(*lambda, *product);
    fieldReduce(*product, f);
    fieldAddTo(*out.x, *lambda);
    fieldAddTo(*out.x, *product);
    fieldAddTo(*out.x, curve.a);

    // y3 = lambda * (x1 + x3) + x3 + y1.
    fieldAdd(*P.x, *out.x, *sum);
    fieldMultiply(*sum, *lambda, *product);
    fieldReduce(*product, f);
    fieldAdd(*product, *out.x, *out.y);
    fieldAddTo(*out.y, *P.y);
}

void pointDouble(const CurvePoint& P, const CurveCoefficients& curve, CurvePoint& out,
                 const FieldElement& f) {
    if (pointIsInfinity(P)) {
        out.flags |= pointInfinity;
        return;
    }
    out.flags &= ~pointInfinity;

    const std::uint64_t degree = P.x->degree;
    const FieldTemporary lambda(fieldNew(degree));
    const FieldTemporary product(fieldNew(degree));

    // lambda = y1 / x1 + x1; x3 = lambda^2 + lambda + a.
    fieldDivide(*P.y, *P.x, *lambda, f);
    fieldAddTo(*lambda, *P.x);
    fieldSquare(*lambda, *product);
    fieldReduce(*product, f);
    fieldAdd(*product, *lambda, *out.x);
    fieldAddTo(*out.x, curve.a);

    // y3 = x1^2 + x3 + lambda * x3.
    fieldMultiply(*lambda, *out.x, *product);
    fieldReduce(*product, f);
    fieldAdd(*product, *out.x, *out.y);
    fieldSquare(*P.x, *product);
    fieldReduce(*product, f);
    fieldAddTo(*out.y, *product);
}

}  // namespace core
