#include "engine/working_domain.h"

#include <gtest/gtest.h>

#include "curve/sect163r2.h"

namespace {

TEST(WorkingDomain, IsTheCurveWithAnotherBasePoint) {
    core::FieldElement x{.degree = 163, .capacity = workingElementCapacity};
    core::FieldElement y = x;
    const core::CurvePoint base{.x = &x, .y = &y};
    const core::CurveDomain domain = workingDomain(base);
    const core::CurveDomain& curve = core::sect163r2.domain;
    EXPECT_EQ(domain.degree, 163U);
    EXPECT_EQ(&domain.basePoint, &base);
    EXPECT_EQ(&domain.reductionPolynomial, &curve.reductionPolynomial);
    EXPECT_EQ(&domain.coefficientA, &curve.coefficientA);
    EXPECT_EQ(&domain.coefficientB, &curve.coefficientB);
    EXPECT_EQ(&domain.order, &curve.order);
    EXPECT_EQ(&domain.cofactor, &curve.cofactor);
}

}  // namespace
