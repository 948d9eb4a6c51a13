#pragma once

#include <optional>
#include <string>

#include "tools/signature/signature_conversion.h"

/// Either a signature or a digest.
struct ConvertOptions {
    /// The signature in the form `from`: the argument itself, or for `SignatureForm::der` the path
    /// of a file. In each form, "-" means what standard input holds.
    std::optional<std::string> signature;
    SignatureForm from = SignatureForm::text;
    SignatureForm to = SignatureForm::der;

    /// The file whose digest is taken; "-" for standard input.
    std::optional<std::string> digestOf;

    /// A signature in all forms at once, and `to` means nothing; a digest in hexadecimal digits.
    bool json = false;
};

/// Converts a signature between its forms, or writes the RIPEMD-160 digest of a file as 20 bytes in
/// reversed order: so other software reads the number out of them that signing takes from the
/// digest. DER and a digest are bytes; text and hexadecimal end with a line feed.
///
/// A signature that the program accepts for no data and no key is refused in every form.
int convertCommand(const ConvertOptions& options);
