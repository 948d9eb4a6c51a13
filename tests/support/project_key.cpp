#include "tests/support/project_key.h"

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/ecdsa.h>
#include <openssl/obj_mac.h>
#include <openssl/ripemd.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "tests/support/hexadecimal.h"
#include "tests/support/random_operands.h"

namespace {

template <auto release>
struct Releaser {
    template <typename T>
    void operator()(T* value) const {
        release(value);
    }
};

using Number = std::unique_ptr<BIGNUM, Releaser<BN_free>>;
using Group = std::unique_ptr<EC_GROUP, Releaser<EC_GROUP_free>>;
using Point = std::unique_ptr<EC_POINT, Releaser<EC_POINT_free>>;
using Key = std::unique_ptr<EC_KEY, Releaser<EC_KEY_free>>;
using Signature = std::unique_ptr<ECDSA_SIG, Releaser<ECDSA_SIG_free>>;

void require(bool done) {
    if (!done) {
        throw std::runtime_error("libcrypto refuses");
    }
}

BN_CTX* context() {
    static const std::unique_ptr<BN_CTX, Releaser<BN_CTX_free>> kept(BN_CTX_new());
    return kept.get();
}

Number number(const std::string& digits) {
    BIGNUM* value = nullptr;
    require(BN_hex2bn(&value, digits.c_str()) == static_cast<int>(digits.size()));
    return Number(value);
}

std::string digits(const BIGNUM* value) {
    const std::unique_ptr<char, void (*)(char*)> text(BN_bn2hex(value),
                                                      [](char* c) { OPENSSL_free(c); });
    return text.get();
}

Group curve() {
    Group group(EC_GROUP_new_by_curve_name(NID_sect163r2));
    require(group != nullptr);
    return group;
}

const BIGNUM* order() {
    static const Number n = number(curveOrderDigits);
    return n.get();
}

Point pointAt(const EC_GROUP* group, const std::string& x, const std::string& y) {
    Point point(EC_POINT_new(group));
    require(EC_POINT_set_affine_coordinates(group, point.get(), number(x).get(), number(y).get(),
                                            context()) == 1);
    return point;
}

Point multiple(const EC_GROUP* group, const EC_POINT* point, const BIGNUM* factor) {
    Point product(EC_POINT_new(group));
    require(EC_POINT_mul(group, product.get(), nullptr, point, factor, context()) == 1);
    return product;
}

void coordinates(const EC_GROUP* group, const EC_POINT* point, std::string& x, std::string& y) {
    const Number xNumber(BN_new());
    const Number yNumber(BN_new());
    require(EC_POINT_get_affine_coordinates(group, point, xNumber.get(), yNumber.get(),
                                            context()) == 1);
    x = digits(xNumber.get());
    y = digits(yNumber.get());
}

bool isOfOrder(const EC_GROUP* group, const EC_POINT* point) {
    return EC_POINT_is_at_infinity(group, point) == 0 &&
           EC_POINT_is_at_infinity(group, multiple(group, point, order()).get()) == 1;
}

/// A point of order n with this x, if there is one.
Point pointOfOrderWithX(const EC_GROUP* group, const BIGNUM* x) {
    Point point(EC_POINT_new(group));
    if (EC_POINT_set_compressed_coordinates(group, point.get(), x, 0, context()) != 1 ||
        !isOfOrder(group, point.get())) {
        point.reset();
    }
    return point;
}

Bytes ripemd160(const Bytes& data) {
    Bytes digest(RIPEMD160_DIGEST_LENGTH);
    RIPEMD160(data.data(), data.size(), digest.data());
    return digest;
}

/// e: the digest with its first byte as the least significant.
Number digestNumber(const Bytes& data) {
    const Bytes digest = ripemd160(data);
    return Number(BN_lebin2bn(digest.data(), static_cast<int>(digest.size()), nullptr));
}

/// The digest as ECDSA takes it, most significant byte first.
Bytes reversed(Bytes digest) {
    std::reverse(digest.begin(), digest.end());
    return digest;
}

Key keyOf(const ProjectKey& key) {
    const Group group = curve();
    const Number cofactor = number("2");
    require(EC_GROUP_set_generator(group.get(), pointAt(group.get(), key.baseX, key.baseY).get(),
                                   order(), cofactor.get()) == 1);
    Key made(EC_KEY_new());
    require(EC_KEY_set_group(made.get(), group.get()) == 1);
    require(EC_KEY_set_public_key(made.get(),
                                  pointAt(group.get(), key.publicX, key.publicY).get()) == 1);
    require(EC_KEY_set_private_key(made.get(), number(key.scalar).get()) == 1);
    return made;
}

std::string elementDigits(const Bytes& value) {
    return hexadecimalFromBytes(Bytes(value.rbegin(), value.rend() - 8).data(), value.size() - 8);
}

}  // namespace

ProjectKey keyWithScalar(const std::string& scalar, const std::string& baseX,
                         const std::string& baseY) {
    const Group group = curve();
    ProjectKey key{.baseX = baseX, .baseY = baseY, .scalar = scalar, .publicX = {}, .publicY = {}};
    const Point base = pointAt(group.get(), baseX, baseY);
    coordinates(group.get(), multiple(group.get(), base.get(), number(scalar).get()).get(),
                key.publicX, key.publicY);
    return key;
}

ProjectKey keyWithBaseMultiple(const std::string& nonce) {
    const Group group = curve();
    std::string x;
    std::string y;
    coordinates(
        group.get(),
        multiple(group.get(), EC_GROUP_get0_generator(group.get()), number(nonce).get()).get(), x,
        y);
    return keyWithScalar("01", x, y);
}

ProjectKey randomProjectKey() {
    const ProjectKey base = keyWithBaseMultiple(randomNumber(21));
    return keyWithScalar(randomNumber(21), base.baseX, base.baseY);
}

std::string randomNumber(std::size_t bytes) {
    Bytes drawn = randomBytes(bytes);
    const std::uint64_t topLimit = bytes == 21 ? 4 : 256;
    drawn.at(0) = static_cast<std::uint8_t>(1 + randomBelow(topLimit - 1));
    return hexadecimalFromBytes(drawn.data(), drawn.size());
}

ArrangedKey arrangeSignature(const Bytes& data, const std::string& nonce, std::size_t rBytes,
                             const std::string& s) {
    const Group group = curve();
    Point noncePoint;
    Number r;
    while (noncePoint == nullptr) {
        r = number(randomNumber(rBytes));
        noncePoint = pointOfOrderWithX(group.get(), r.get());
    }
    // The base point is nonce^-1 * R, the scalar (s * nonce - e) / r.
    const Number k = number(nonce);
    const Number kInverse(BN_mod_inverse(nullptr, k.get(), order(), context()));
    const Number rInverse(BN_mod_inverse(nullptr, r.get(), order(), context()));
    const Number e = digestNumber(data);
    const Number scalar(BN_new());
    require(BN_mod_mul(scalar.get(), number(s).get(), k.get(), order(), context()) == 1);
    require(BN_mod_sub(scalar.get(), scalar.get(), e.get(), order(), context()) == 1);
    require(BN_mod_mul(scalar.get(), scalar.get(), rInverse.get(), order(), context()) == 1);
    std::string x;
    std::string y;
    coordinates(group.get(), multiple(group.get(), noncePoint.get(), kInverse.get()).get(), x, y);
    return {.key = keyWithScalar(digits(scalar.get()), x, y),
            .signature = {.r = digits(r.get()), .s = digits(number(s).get())}};
}

std::string scalarOfZeroS(const Bytes& data, const std::string& r) {
    const Number rInverse(BN_mod_inverse(nullptr, number(r).get(), order(), context()));
    const Number scalar(BN_new());
    require(BN_mod_mul(scalar.get(), digestNumber(data).get(), rInverse.get(), order(),
                       context()) == 1);
    require(BN_sub(scalar.get(), order(), scalar.get()) == 1);
    return digits(scalar.get());
}

bool judgeAcceptsKey(const ProjectKey& key) {
    const Group group = curve();
    const Number scalar = number(key.scalar);
    if (BN_is_zero(scalar.get()) != 0 || BN_cmp(scalar.get(), order()) >= 0) {
        return false;
    }
    // EC_POINT_set_affine_coordinates refuses points that are not on the curve.
    const Point base = pointAt(group.get(), key.baseX, key.baseY);
    const Point publicPoint = pointAt(group.get(), key.publicX, key.publicY);
    const Point product = multiple(group.get(), base.get(), scalar.get());
    return isOfOrder(group.get(), base.get()) &&
           EC_POINT_cmp(group.get(), product.get(), publicPoint.get(), context()) == 0;
}

bool judgeAccepts(const ProjectKey& key, const Bytes& data, const SignatureNumbers& signature) {
    return judgeAcceptsDigest(key, ripemd160(data), signature);
}

bool judgeAcceptsDigest(const ProjectKey& key, const Bytes& digest,
                        const SignatureNumbers& signature) {
    const Signature pair(ECDSA_SIG_new());
    require(ECDSA_SIG_set0(pair.get(), number(signature.r).release(),
                           number(signature.s).release()) == 1);
    const Bytes bigEndian = reversed(digest);
    return ECDSA_do_verify(bigEndian.data(), static_cast<int>(bigEndian.size()), pair.get(),
                           keyOf(key).get()) == 1;
}

SignatureNumbers judgeSign(const ProjectKey& key, const Bytes& data) {
    const Bytes bigEndian = reversed(ripemd160(data));
    const Signature pair(
        ECDSA_do_sign(bigEndian.data(), static_cast<int>(bigEndian.size()), keyOf(key).get()));
    require(pair != nullptr);
    return {.r = digits(ECDSA_SIG_get0_r(pair.get())), .s = digits(ECDSA_SIG_get0_s(pair.get()))};
}

SignatureNumbers signWithNonce(const ProjectKey& key, const std::string& nonce, const Bytes& data) {
    const Group group = curve();
    const Number k = number(nonce);
    const Point base = pointAt(group.get(), key.baseX, key.baseY);
    std::string x;
    std::string y;
    coordinates(group.get(), multiple(group.get(), base.get(), k.get()).get(), x, y);
    const Number r = number(x);
    require(BN_nnmod(r.get(), r.get(), order(), context()) == 1);
    const Number s = digestNumber(data);
    const Number product(BN_new());
    require(BN_mod_mul(product.get(), number(key.scalar).get(), r.get(), order(), context()) == 1);
    require(BN_mod_add(s.get(), s.get(), product.get(), order(), context()) == 1);
    const Number kInverse(BN_mod_inverse(nullptr, k.get(), order(), context()));
    require(BN_mod_mul(s.get(), s.get(), kInverse.get(), order(), context()) == 1);
    return {.r = digits(r.get()), .s = digits(s.get())};
}

AttributeValues keyAttributes(const ProjectKey& key) {
    return {{72, elementValue(163, key.baseX)},
            {73, elementValue(163, key.baseY)},
            {74, integerValue(key.scalar)},
            {75, elementValue(163, key.publicX)},
            {76, elementValue(163, key.publicY)}};
}

ProjectKey keyFromAttributes(const AttributeValues& attributes) {
    const Bytes& scalar = attributes.at(74);
    const Bytes magnitude(scalar.rbegin(), scalar.rend() - 4);
    return {.baseX = elementDigits(attributes.at(72)),
            .baseY = elementDigits(attributes.at(73)),
            .scalar = hexadecimalFromBytes(magnitude.data(), magnitude.size()),
            .publicX = elementDigits(attributes.at(75)),
            .publicY = elementDigits(attributes.at(76))};
}

std::string multiplyAdd(const std::string& factor, const std::string& a, const std::string& b) {
    const Number result(BN_new());
    require(BN_mul(result.get(), number(factor).get(), number(a).get(), context()) == 1);
    require(BN_add(result.get(), result.get(), number(b).get()) == 1);
    return digits(result.get());
}
