#pragma once

#include <string>
#include <string_view>

#include "tools/signature/signature_reading.h"

/// The forms of a signature. Reading takes what writing gives.
enum class SignatureForm {
    text,        ///< the program's own text
    der,         ///< bytes of ECDSA-Sig-Value, as other software has them
    hexadecimal  ///< two words "r=DIGITS" and "s=DIGITS", most significant digit first
};

/// Reads a signature in this form. The refusal says what is wrong with the form, or why the
/// program accepts no signature with these numbers.
///
/// In the text nothing is passed over, as verifying does not either. Hexadecimal words stand
/// between white space, in this order, with digits of either case and zeros in front as one likes.
SignatureReading readSignatureAs(SignatureForm form, std::string_view bytes);

/// Writes a signature without a refusal. Hexadecimal words stand on lines of their own, the last
/// one without a line feed.
std::string writeSignatureAs(SignatureForm form, const SignatureReading& signature);

/// r or s of a signature without a refusal: 42 lower-case hexadecimal digits, for 21 bytes.
std::string numberDigits(const core::CoreInteger& number);
