#include "tools/project/point_product.h"

#include "curve/point.h"
#include "curve/sect163r2.h"

void pointProduct(const core::FieldElement& k, const core::CurvePoint& P, core::CurvePoint& out) {
    const core::CurveDomain& curve = core::sect163r2.domain;
    const core::CurveCoefficients coefficients{curve.coefficientA, curve.coefficientB};
    core::pointMultiply(k, P, coefficients, out, curve.reductionPolynomial);
}
