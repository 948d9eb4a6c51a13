// Signs with a nonce and a private scalar that valgrind takes for undefined, so that it reports
// each branch and each address that depends on them:
//
//   secret_signing carryless|plain|defining|planted
//
// `planted` is the fastest route with a branch on the nonce before it.

#include <valgrind/memcheck.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "core/entry.h"
#include "core/host.h"
#include "curve/declassify.h"
#include "curve/fast/fast_route.h"
#include "curve/fast/processor.h"
#include "curve/sect163r2.h"
#include "curve/signature_primitive.h"

namespace {

const core::FastRoute* chosen = nullptr;

const core::FastRoute& fastestRoute() {
    return core::hasCarrylessMultiplication() ? core::carrylessRoute : core::plainRoute;
}

core::Words163 branchOnNonce(const core::Words163& k, const core::Words163& x) {
    static volatile int oddNonces = 0;
    if ((k[0] & 1) != 0) {
        oddNonces = oddNonces + 1;
    }
    return fastestRoute().multipleX(k, x);
}

bool choose(std::string_view name) {
    static core::FastRoute planted = fastestRoute();
    planted.multipleX = branchOnNonce;
    if (name == "carryless") {
        chosen = &core::carrylessRoute;
    } else if (name == "plain") {
        chosen = &core::plainRoute;
    } else if (name == "planted") {
        chosen = &planted;
    } else if (name != "defining") {
        return false;
    }
    return true;
}

}  // namespace

namespace core {

const FastRoute* fastRoute() {
    return chosen;
}

void declassify(const void* data, std::size_t size) {
    VALGRIND_MAKE_MEM_DEFINED(data, size);
}

void hostRandomBytes(void* buffer, std::uint32_t length) {
    // The constants of C's example for rand().
    static std::uint32_t state = 1;
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    for (std::uint32_t i = 0; i < length; ++i) {
        state = state * 1103515245 + 12345;
        bytes[i] = static_cast<std::uint8_t>(state >> 16);
    }
    VALGRIND_MAKE_MEM_UNDEFINED(buffer, length);
}

}  // namespace core

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2 || !choose(arguments[1]) || RUNNING_ON_VALGRIND == 0) {
        std::fputs("usage: valgrind secret_signing carryless|plain|defining|planted\n", stderr);
        return 2;
    }
    coreEntry::coreStart();
    // It states more bits than it has.
    core::CoreInteger scalar{.lengthAndSign = 5, .capacity = 5, .limbs = {1, 2, 3}};
    VALGRIND_MAKE_MEM_UNDEFINED(scalar.limbs.data(), 5 * sizeof(std::uint64_t));
    constexpr std::array<std::uint8_t, 20> digest = {1, 2, 3};
    for (int i = 0; i < 3; ++i) {
        core::CoreInteger r{.capacity = 3};
        core::CoreInteger s{.capacity = 3};
        core::curveSignDigest(core::sect163r2.domain, scalar, digest.data(), {.r = r, .s = s});
        std::printf("%016llX %016llX\n", static_cast<unsigned long long>(r.limbs[0]),
                    static_cast<unsigned long long>(s.limbs[0]));
    }
    coreEntry::coreStop();
    return 0;
}
