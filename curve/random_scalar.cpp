#include "curve/random_scalar.h"

#include "curve/field.h"

namespace core {

void drawScalar(FieldElement& k, const FieldElement& order) {
    fieldClear(k);
    do {
        fieldRandom(k);
    } while (fieldIsZero(k) || fieldCompare(k, order) != -1);
}

}  // namespace core
