#pragma once

#include <optional>
#include <string>

#include "project/project_file.h"
#include "tools/signature/byte_string.h"

/// A key, or why there is none; then it is empty in both forms.
struct KeyExport {
    std::optional<std::string> refusal{};  ///< names the attribute that it comes from
    ByteString der{};
    std::string pem{};  ///< the same bytes as text
};

// The curve's parameters stand in each key one by one, since the base point, which is the
// project's, makes them those of no named curve. Coordinates and scalar are refused when they do
// not fit into the field or below the order; that the points are on the curve is not looked at
// here, but by the software that reads the key.

/// The public key: "PUBLIC KEY", a SubjectPublicKeyInfo (RFC 5480) with ECParameters (SEC 1 version
/// 2.0, appendix C.2; X9.62 names the basis).
KeyExport exportPublicKey(const ProjectFile& project);

/// The private key: "PRIVATE KEY", a PrivateKeyInfo (RFC 5208) of an ECPrivateKey (RFC 5915) with
/// the public key in it.
KeyExport exportPrivateKey(const ProjectFile& project);
