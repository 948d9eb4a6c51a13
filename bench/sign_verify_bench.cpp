// Signing and verifying 64 bytes with the published base point, by ours with its digest and by
// libcrypto without.

#include <benchmark/benchmark.h>
#include <openssl/ecdsa.h>

#include "bench/operands.h"
#include "core/integer.h"
#include "curve/field.h"
#include "curve/sect163r2.h"
#include "curve/signature_primitive.h"

namespace {

constexpr std::size_t dataSize = 64;
constexpr std::size_t digestSize = 20;
constexpr std::array<std::uint8_t, dataSize> data = {};
constexpr std::uint64_t halfBits = 192;

KeyPair newKey() {
    KeyPair key(EC_KEY_new_by_curve_name(NID_sect163r2));
    EC_KEY_generate_key(key.get());
    return key;
}

/// A key and a signature of ours. The core is started once, as in a process.
struct OurKey {
    core::FieldElement x;
    core::FieldElement y;
    core::IntegerTemporary scalar{core::integerAlloc(halfBits)};
    core::IntegerTemporary r{core::integerAlloc(halfBits)};
    core::IntegerTemporary s{core::integerAlloc(halfBits)};

    OurKey() {
        const KeyPair key = newKey();
        const NumberContext context(BN_CTX_new());
        const Number xNumber(BN_new());
        const Number yNumber(BN_new());
        EC_POINT_get_affine_coordinates(EC_KEY_get0_group(key.get()),
                                        EC_KEY_get0_public_key(key.get()), xNumber.get(),
                                        yNumber.get(), context.get());
        x = elementFrom(xNumber.get());
        y = elementFrom(yNumber.get());
        core::fieldToInteger(elementFrom(EC_KEY_get0_private_key(key.get())), *scalar);
        core::integerNormalise(*scalar);
    }

    core::CurvePoint publicPoint() { return {.x = &x, .y = &y, .flags = 0}; }
    core::SignaturePair pair() const { return {.r = *r, .s = *s}; }
    void sign() const {
        core::curveSign(core::sect163r2.domain, *scalar, data.data(), data.size(), pair());
    }
    bool verify() {
        return core::curveVerify(core::sect163r2.domain, publicPoint(), data.data(), data.size(),
                                 pair()) == 1;
    }
};

void signOurs(benchmark::State& state) {
    OurKey key;
    for (auto _ : state) {
        key.sign();
    }
}
BENCHMARK(signOurs)->Name("sign/ours");

void verifyOurs(benchmark::State& state) {
    OurKey key;
    key.sign();
    for (auto _ : state) {
        if (!key.verify()) {
            state.SkipWithError("a signature does not verify");
            break;
        }
    }
}
BENCHMARK(verifyOurs)->Name("verify/ours");

void signLibcrypto(benchmark::State& state) {
    const KeyPair key = newKey();
    for (auto _ : state) {
        ECDSA_SIG_free(ECDSA_do_sign(data.data(), digestSize, key.get()));
    }
}
BENCHMARK(signLibcrypto)->Name("sign/libcrypto");

void verifyLibcrypto(benchmark::State& state) {
    const KeyPair key = newKey();
    ECDSA_SIG* const signature = ECDSA_do_sign(data.data(), digestSize, key.get());
    for (auto _ : state) {
        if (ECDSA_do_verify(data.data(), digestSize, signature, key.get()) != 1) {
            state.SkipWithError("a signature does not verify");
            break;
        }
    }
    ECDSA_SIG_free(signature);
}
BENCHMARK(verifyLibcrypto)->Name("verify/libcrypto");

}  // namespace
