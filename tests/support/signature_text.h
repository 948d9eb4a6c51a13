#pragma once

#include <cstddef>
#include <string>

#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"

// The text of a signature, written and read bit by bit: bit i of the bytes, counted from the lowest
// of the first byte, is bit i mod 6 of character i / 6.

/// The text of these bytes; the bits behind them count as zero.
std::string textFromBytes(const Bytes& bytes);

/// The bytes of a text that has "=" at its end only.
Bytes bytesFromText(const std::string& text);

/// The text of a signature whose halves have `half` bytes each; 0 stands for the shortest halves
/// that hold both numbers.
std::string signatureText(const SignatureNumbers& signature, std::size_t half = 0);

/// The numbers that a text stands for, in upper-case digits as libcrypto writes them.
SignatureNumbers readSignatureText(const std::string& text);
