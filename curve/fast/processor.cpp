#include "curve/fast/processor.h"

#include <sys/platform/x86.h>

namespace core {

bool hasCarrylessMultiplication() {
    return CPU_FEATURE_ACTIVE(PCLMULQDQ);
}

}  // namespace core
