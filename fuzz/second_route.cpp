// Property: for any two scalars and a multiple of the base point beside it, both ways to multiply
// polynomials give what the defining arithmetic gives, or give up the product of two points.
//
// Input: 24 bytes for each scalar, taken modulo the order, then up to 21 for the factor of the
// other point; small factors make the walk meet equal points.

#include "core/state.h"
#include "curve/field.h"
#include "curve/point.h"
#include "curve/sect163r2.h"
#include "fuzz/input_reader.h"
#include "fuzz/property.h"
#include "tests/support/curve_keys.h"
#include "tests/support/fast_routes.h"

namespace {

constexpr std::size_t scalarSize = 24;

BigNumber scalarFrom(const std::vector<std::uint8_t>& bytes) {
    return BigNumber::fromBytes(bytes) % curveOrder();
}

/// x of the point, 0 for infinity.
core::Words163 xOf(const core::CurvePoint& R) {
    return core::pointIsInfinity(R) ? core::Words163{} : core::load163(*R.x);
}

core::Words163 definedMultipleX(const core::FieldElement& k, const core::CurvePoint& P) {
    PointRecord R(pointAtInfinity());
    if (!core::fieldIsZero(k)) {
        core::pointMultiply(k, P, core::sect163r2.coefficients, R,
                            core::sect163r2.domain.reductionPolynomial);
    }
    return xOf(R);
}

core::Words163 definedTwinMultipleX(const core::CurvePoint& P, const core::CurvePoint& Q,
                                    const core::FieldElement& u1, const core::FieldElement& u2) {
    PointRecord R(pointAtInfinity());
    core::pointMultiplyTwin(P, Q, u1, u2, R, core::sect163r2.coefficients,
                            core::sect163r2.domain.reductionPolynomial);
    return xOf(R);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const CurveJudge judge = [] {
        core::coreStart();
        return CurveJudge();
    }();
    InputReader input(data, size);
    const core::FieldElement u1 = elementFrom(scalarFrom(input.bytes(scalarSize)));
    const core::FieldElement u2 = elementFrom(scalarFrom(input.bytes(scalarSize)));
    const BigNumber factor = scalarFrom(input.bytes(scalarSize - 3));
    if (factor.isZero()) {
        return 0;
    }
    const PointRecord P(judge.basePoint());
    const PointRecord Q(judge.multiply(factor, judge.basePoint()));
    const core::Words163 single = definedMultipleX(u1, Q);
    const core::Words163 twin = definedTwinMultipleX(P, Q, u1, u2);
    for (const auto& [name, route] : fastRoutes()) {
        require(route.isSound(P) && route.isSound(Q), "multiples of the base point are sound");
        require(route.multipleX(core::load163(u1), core::load163(*Q->x)) == single,
                "a multiple is that of the definition");
        core::Words163 x{};
        require(!route.twinMultipleX(core::load163(P), core::load163(Q), core::load163(u1),
                                     core::load163(u2), x) ||
                    x == twin,
                "a sum of two multiples is that of the definition, or given up");
    }
    return 0;
}
