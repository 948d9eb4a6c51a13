#include "tools/project/point_product.h"

#include "curve/point.h"

void pointProduct(const core::FieldElement& k, const core::CurvePoint& P, core::CurvePoint& out) {
    const core::CurveCoefficients coefficients{projectCurve.coefficientA,
                                               projectCurve.coefficientB};
    core::pointMultiply(k, P, coefficients, out, projectCurve.reductionPolynomial);
}
