#include "core/host.h"
#include "random/random_generator.h"

namespace core {

void hostRandomBytes(void* buffer, std::uint32_t length) {
    RandomGenerator::instance().fillBytes(buffer, length);
}

}  // namespace core
