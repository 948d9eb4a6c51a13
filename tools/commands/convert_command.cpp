#include "tools/commands/convert_command.h"

#include <nlohmann/json.hpp>
#include <string>

#include "tools/exit_status.h"
#include "tools/files/input_file.h"
#include "tools/files/small_file.h"
#include "tools/report.h"
#include "tools/signature/byte_string.h"

namespace {

/// The bytes of the signature, without the line feed that ends a text on standard input.
SmallFile readSignatureBytes(const ConvertOptions& options) {
    const std::string& signature = options.signature;
    if (signature != "-" && options.from != SignatureForm::der) {
        return {.failure = std::nullopt, .content = signature};
    }
    if (signature.empty()) {
        return {.failure = "SIGNATURE: the path is empty", .content = {}};
    }
    SmallFile file = readSmallFile(signature, "signature");
    if (options.from != SignatureForm::der && file.content.ends_with('\n')) {
        file.content.pop_back();
    }
    return file;
}

}  // namespace

int convertCommand(const ConvertOptions& options) {
    if (options.to == SignatureForm::der && !options.json && isOutputTerminal()) {
        return reportFailure(
            "standard output is a terminal, and DER is binary; redirect it to a file, or use "
            "--to hex");
    }
    const SmallFile source = readSignatureBytes(options);
    if (source.failure.has_value()) {
        return reportFailure(*source.failure);
    }
    const SignatureReading signature = readSignatureAs(options.from, source.content);
    if (signature.refusal.has_value()) {
        const bool isArgument = options.signature != "-" && options.from != SignatureForm::der;
        const std::string name = isArgument ? "" : inputName(options.signature) + ": ";
        reportFailure(name + signature.refusal->text);
        if (isArgument && isFile(options.signature)) {
            reportRemark(
                "SIGNATURE is the name of a file; redirect standard input from it, and "
                "write - for SIGNATURE");
        }
        return exitFailed;
    }
    if (options.json) {
        const std::string der = writeSignatureAs(SignatureForm::der, signature);
        printJson({{"r", numberDigits(signature.r)},
                   {"s", numberDigits(signature.s)},
                   {"text", writeSignatureAs(SignatureForm::text, signature)},
                   {"der", hexadecimalDigits(ByteString(der.begin(), der.end()))}});
        return exitDone;
    }
    const std::string end = options.to == SignatureForm::der ? "" : "\n";
    printText(writeSignatureAs(options.to, signature) + end);
    return exitDone;
}
