#include "engine/working_domain.h"

#include "curve/sect163r2.h"

core::CurveDomain workingDomain(const core::CurvePoint& basePoint) {
    const core::CurveDomain& curve = core::sect163r2.domain;
    return {.degree = curve.degree,
            .reductionPolynomial = curve.reductionPolynomial,
            .coefficientA = curve.coefficientA,
            .coefficientB = curve.coefficientB,
            .basePoint = basePoint,
            .order = curve.order,
            .cofactor = curve.cofactor};
}
