#include "curve/fast/carryless_products.h"
#include "curve/fast/fast_multiples.h"

namespace core {

constinit const FastRoute carrylessRoute = fastRouteBy<CarrylessProducts>;

}  // namespace core
