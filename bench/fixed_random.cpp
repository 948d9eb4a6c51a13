#include "core/host.h"

// The random bytes of counted_request: the same in each run, so that each takes the same
// instructions.

namespace core {

void hostRandomBytes(void* buffer, std::uint32_t length) {
    // A linear congruential generator with the constants of C's example for rand().
    static std::uint32_t state = 1;
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    for (std::uint32_t i = 0; i < length; ++i) {
        state = state * 1103515245 + 12345;
        bytes[i] = static_cast<std::uint8_t>(state >> 16);
    }
}

}  // namespace core
