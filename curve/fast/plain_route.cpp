#include "curve/fast/fast_multiples.h"
#include "curve/fast/plain_products.h"

namespace core {

constinit const FastRoute plainRoute = fastRouteBy<PlainProducts>;

}  // namespace core
