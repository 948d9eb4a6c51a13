#include "curve/fast/fast_route.h"

#include "curve/fast/processor.h"

namespace core {

const FastRoute* fastRoute() {
#if defined(SIGN_DEFINING_ROUTE_ONLY)
    return nullptr;
#elif defined(SIGN_PLAIN_ARITHMETIC)
    return &plainRoute;
#else
    return hasCarrylessMultiplication() ? &carrylessRoute : &plainRoute;
#endif
}

}  // namespace core
