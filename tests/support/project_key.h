#pragma once

#include <cstdint>
#include <string>

#include "tests/support/project_builder.h"

// Keys of projects and signatures under them, made and judged by libcrypto. Numbers and coordinates
// are hexadecimal digits.

/// The key of one project: on sect163r2, a base point of its own, a scalar and their product.
struct ProjectKey {
    std::string baseX;
    std::string baseY;
    std::string scalar;
    std::string publicX;
    std::string publicY;
};

struct SignatureNumbers {
    std::string r;
    std::string s;

    bool operator==(const SignatureNumbers&) const = default;
};

/// Order of the curve's large subgroup: SEC 2 version 2.0, section 3.2.3.
inline constexpr const char* curveOrderDigits = "40000000000000000000292FE77E70C12A4234C33";

/// A key of which base point and scalar come from the test's own generator.
ProjectKey randomProjectKey();

/// The product of a scalar and a base point becomes the key's public point.
ProjectKey keyWithScalar(const std::string& scalar, const std::string& baseX,
                         const std::string& baseY);

/// `nonce` times the published base point, as the base point of a key whose scalar is 1.
ProjectKey keyWithBaseMultiple(const std::string& nonce);

/// A key under which `data`, signed with `nonce`, has the signature (r, s) for the given s and an r
/// of exactly `rBytes` bytes. For an s of 0 that signature is the one which signing must pass over.
struct ArrangedKey {
    ProjectKey key;
    SignatureNumbers signature;
};
ArrangedKey arrangeSignature(const Bytes& data, const std::string& nonce, std::size_t rBytes,
                             const std::string& s);

/// The scalar under which every signature of `data` with this r has an s of 0: -e / r.
std::string scalarOfZeroS(const Bytes& data, const std::string& r);

/// A number of exactly `bytes` bytes, its top byte below 4 for 21 bytes, so that it is below n.
std::string randomNumber(std::size_t bytes);

/// Whether both points of the key are on the curve and of order n, and the public point is scalar
/// times base point, the scalar being from 1 to n - 1.
bool judgeAcceptsKey(const ProjectKey& key);

/// ECDSA of libcrypto over the RIPEMD-160 of `data`, read as a little-endian number.
bool judgeAccepts(const ProjectKey& key, const Bytes& data, const SignatureNumbers& signature);
bool judgeAcceptsDigest(const ProjectKey& key, const Bytes& digest,
                        const SignatureNumbers& signature);
SignatureNumbers judgeSign(const ProjectKey& key, const Bytes& data);

/// ECDSA by its formulas, with this nonce and no second attempt.
SignatureNumbers signWithNonce(const ProjectKey& key, const std::string& nonce, const Bytes& data);

/// The five attributes of the key, and back.
AttributeValues keyAttributes(const ProjectKey& key);
ProjectKey keyFromAttributes(const AttributeValues& attributes);

/// factor * a + b, as a number.
std::string multiplyAdd(const std::string& factor, const std::string& a, const std::string& b);
