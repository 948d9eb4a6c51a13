#include "verifier/pair_rules.h"

#include "core/integer.h"
#include "curve/field.h"
#include "curve/sect163r2.h"
#include "engine/signature_text.h"

core::PairFault pairFault(const core::CoreInteger& r, const core::CoreInteger& s) {
    const core::PairFault fault = core::zeroFault(r, s);
    if (fault != core::PairFault::none) {
        return fault;
    }
    core::CoreInteger order{.capacity = signatureLimbs};
    core::fieldToInteger(core::sect163r2.domain.order, order);
    return core::rangeFault(r, s, order);
}

bool isPadded(const core::CoreInteger& r) {
    core::CoreInteger normal = r;
    core::integerNormalise(normal);
    return normal.lengthAndSign != r.lengthAndSign;
}
