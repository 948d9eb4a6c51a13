#include "curve/sect163r2.h"

#include <gtest/gtest.h>

#include "curve/point.h"
#include "tests/support/leak_check.h"
#include "tests/support/libcrypto_curve.h"

namespace {

using core::CurveDomain;
using core::FieldElement;
using core::sect163r2;

using Sect163r2 = LeakCheckedTest;

TEST_F(Sect163r2, HoldsTheCurveThatTheJudgeKnows) {
    const CurveDomain& domain = sect163r2.domain;
    const CurveJudge judge;
    EXPECT_EQ(domain.degree, 163U);
    EXPECT_EQ(contentOf(domain.reductionPolynomial), judge.fieldPolynomial());
    EXPECT_EQ(contentOf(domain.reductionPolynomial), curvePolynomial());
    EXPECT_EQ(contentOf(domain.coefficientA), judge.coefficientA());
    EXPECT_EQ(contentOf(domain.coefficientB), judge.coefficientB());
    EXPECT_EQ(contentOf(*domain.basePoint.x), judge.basePoint().x);
    EXPECT_EQ(contentOf(*domain.basePoint.y), judge.basePoint().y);
    EXPECT_EQ(domain.basePoint.flags, 0U);
    EXPECT_EQ(contentOf(domain.order), judge.order());
    EXPECT_EQ(contentOf(domain.cofactor), judge.cofactor());
}

TEST_F(Sect163r2, HasElementsOfTheCurvesDegreeWithRoomForAProduct) {
    const CurveDomain& domain = sect163r2.domain;
    for (const FieldElement* e :
         {&domain.reductionPolynomial, &domain.coefficientA, &domain.coefficientB,
          static_cast<const FieldElement*>(domain.basePoint.x),
          static_cast<const FieldElement*>(domain.basePoint.y), &domain.order, &domain.cofactor}) {
        EXPECT_EQ(e->degree, 163U);
        EXPECT_EQ(e->capacity, 48U);
    }
}

TEST_F(Sect163r2, EndsWithItsPairOfCoefficients) {
    EXPECT_EQ(&sect163r2.coefficients.a, &sect163r2.domain.coefficientA);
    EXPECT_EQ(&sect163r2.coefficients.b, &sect163r2.domain.coefficientB);
}

TEST_F(Sect163r2, HasABasePointOfTheOrder) {
    const CurveDomain& domain = sect163r2.domain;
    PointRecord out(pointAtInfinity());
    out->flags = 0;
    core::pointMultiply(domain.order, domain.basePoint, sect163r2.coefficients, out,
                        domain.reductionPolynomial);
    EXPECT_TRUE(core::pointIsInfinity(out));
}

}  // namespace
