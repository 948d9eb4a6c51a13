#include "curve/sect163r2.h"

#include "curve/sect163r2_values.h"

namespace core {

namespace {

using namespace sect163r2Values;

// A point refers to elements that may be written through it. These stand in read-only memory, and
// no operation writes to the coordinates of an operand.
constexpr CurvePoint basePoint{.x = const_cast<FieldElement*>(&basePointX),
                               .y = const_cast<FieldElement*>(&basePointY)};

}  // namespace

constinit const CurveTable sect163r2{
    .domain = {.degree = degree163,
               .reductionPolynomial = reductionPolynomial,
               .coefficientA = coefficientA,
               .coefficientB = coefficientB,
               .basePoint = basePoint,
               .order = order,
               .cofactor = cofactor},
    .coefficients = {.a = coefficientA, .b = coefficientB},
};

}  // namespace core
