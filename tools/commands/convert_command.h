#pragma once

#include <string>

#include "tools/signature/signature_conversion.h"

struct ConvertOptions {
    /// The signature in the form `from`: the argument itself, or for `SignatureForm::der` the path
    /// of a file. In each form, "-" means what standard input holds.
    std::string signature;
    SignatureForm from = SignatureForm::text;
    SignatureForm to = SignatureForm::der;

    bool json = false;  ///< the signature in all forms at once, and `to` means nothing
};

/// Converts a signature between its forms. DER is bytes, which a terminal is not given; text and
/// hexadecimal end with a line feed.
///
/// A signature that the program accepts for no data and no key is refused in every form.
int convertCommand(const ConvertOptions& options);
