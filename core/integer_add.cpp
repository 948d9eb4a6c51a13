#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "core/verify.h"

namespace core {

void integerAdd(const CoreInteger& a, const CoreInteger& b, CoreInteger& result) {
    verify(integerIsSound(a) && integerIsSound(b) && &result != &a && &result != &b);
    if (integerIsNegative(a) == integerIsNegative(b)) {
        addMagnitudes(a, b, result);
        if (integerIsNegative(a)) {
            integerMarkNegative(result);
        }
    } else if (integerIsNegative(a)) {
        subtractMagnitudes(b, a, result);
    } else {
        subtractMagnitudes(a, b, result);
    }
}

void integerSubtract(const CoreInteger& a, const CoreInteger& b, CoreInteger& result) {
    verify(integerIsSound(a) && integerIsSound(b) && &result != &a && &result != &b);
    if (integerIsNegative(a) != integerIsNegative(b)) {
        addMagnitudes(a, b, result);
        if (integerIsNegative(a)) {
            integerMarkNegative(result);
        }
    } else if (integerIsNegative(a)) {
        subtractMagnitudes(b, a, result);
    } else {
        subtractMagnitudes(a, b, result);
    }
}

}  // namespace core
