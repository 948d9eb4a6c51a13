#pragma once

#include <cstdint>
#include <span>

#include "tools/signature/byte_string.h"
#include "tools/signature/signature_reading.h"

// A signature as ECDSA-Sig-Value: a SEQUENCE of the INTEGERs r and s (RFC 3279, section 2.2.3; SEC
// 1 version 2.0, appendix C.5).

/// The encoding of r and s, both normal.
ByteString writeDerSignature(const core::CoreInteger& r, const core::CoreInteger& s);

/// Reads an encoding, of which there is one for each signature: lengths and numbers in their
/// shortest form, nothing left out and nothing behind. The refusal says what is wrong with it, or
/// why no signature has these numbers.
SignatureReading readDerSignature(std::span<const std::uint8_t> bytes);
