#include "fuzz/signature_oracle.h"

#include <openssl/ripemd.h>

#include <algorithm>
#include <cstddef>

#include "core/state.h"
#include "fuzz/property.h"
#include "fuzz/reference_core_text.h"
#include "tests/support/signature_text.h"

namespace {

constexpr std::size_t longestText = 128;
constexpr std::size_t longestSignature = 42;

/// The digest with its first byte as the least significant.
BigNumber digestNumber(const Bytes& data) {
    Bytes digest(RIPEMD160_DIGEST_LENGTH);
    RIPEMD160(data.data(), data.size(), digest.data());
    return BigNumber::fromBytes(digest);
}

/// A point that stands for nothing in particular, as a base point, and its multiple.
ProjectKey soundKey() {
    const ProjectKey base = keyWithBaseMultiple("1D4F0B2B9AA5C6E2F1D07A3C4B5E6978A9BACBDCE");
    return keyWithScalar("2718281828459045235360287471352662497757A", base.baseX, base.baseY);
}

}  // namespace

std::optional<NumberPair> referenceSignature(const std::string& text) {
    const CoreTextMeaning meaning = referenceCoreText(text);
    if (text.empty() || text.size() > longestText || meaning.count > longestSignature ||
        meaning.count % 2 != 0) {
        return std::nullopt;
    }
    const auto half = static_cast<std::ptrdiff_t>(meaning.count / 2);
    const auto start = meaning.bytes.begin();
    return NumberPair{.r = BigNumber::fromBytes({start, start + half}),
                      .s = BigNumber::fromBytes({start + half, start + 2 * half})};
}

SignatureOracle::SignatureOracle(const ProjectKey& key)
    : key_(key), records_(key), scalar_(BigNumber::fromHexadecimal(key.scalar)) {
    require(judgeAcceptsKey(key), "the key is sound");
    BigNumber nonce = BigNumber::fromHexadecimal("3141592653589793238462643383279502884197");
    for (std::size_t i = 0; i < nonceCount; ++i) {
        nonce = nonce * nonce % curveOrder();
        const SignatureNumbers numbers = signWithNonce(key, nonce.toHexadecimal(), {0});
        nonces_.push_back({.inverse = nonce.inverseModulo(curveOrder()),
                           .r = BigNumber::fromHexadecimal(numbers.r)});
    }
}

NumberPair SignatureOracle::sign(const Bytes& data, std::size_t nonce) const {
    const auto& [inverse, r] = nonces_.at(nonce);
    return {.r = r, .s = inverse * (digestNumber(data) + scalar_ * r) % curveOrder()};
}

bool SignatureOracle::accepts(const Bytes& data, const std::string& text) {
    const std::optional<NumberPair> given = referenceSignature(text);
    if (data.empty() || !given.has_value()) {
        return false;
    }
    for (std::size_t i = 0; i < nonceCount; ++i) {
        if (nonces_[i].r == given->r) {
            const BigNumber s = sign(data, i).s;
            // The negative of a nonce has the same r.
            if (given->s == s || given->s == curveOrder() - s) {
                askLibcrypto(data, {.r = given->r.toHexadecimal(), .s = given->s.toHexadecimal()});
                return true;
            }
        }
    }
    return false;
}

void SignatureOracle::askLibcrypto(const Bytes& data, const SignatureNumbers& numbers) {
    if (data != judgedData_) {
        judgedData_ = data;
        judged_.clear();
    }
    if (judged_.insert({numbers.r, numbers.s}).second) {
        require(judgeAccepts(key_, data, numbers), "libcrypto accepts the signature");
    }
}

SignatureOracle& soundOracle() {
    static SignatureOracle oracle = [] {
        core::coreStart();
        return SignatureOracle(soundKey());
    }();
    return oracle;
}

std::string textOf(const NumberPair& signature, std::size_t half) {
    return signatureText({.r = signature.r.toHexadecimal(), .s = signature.s.toHexadecimal()},
                         half);
}
