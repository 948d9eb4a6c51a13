#include "curve/fast/processor.h"

#if defined(__x86_64__)
#include <sys/platform/x86.h>
#endif

namespace core {

bool hasCarrylessMultiplication() {
#if defined(__x86_64__)
    return CPU_FEATURE_ACTIVE(PCLMULQDQ);
#else
    return false;
#endif
}

}  // namespace core
