#include "tools/commands/convert_command.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tools/exit_status.h"
#include "tools/files/file_digest.h"
#include "tools/files/input_file.h"
#include "tools/files/small_file.h"
#include "tools/report.h"
#include "tools/signature/byte_string.h"

namespace {

/// The bytes of the signature, without the line feed that ends a text on standard input.
SmallFile readSignatureBytes(const ConvertOptions& options) {
    const std::string& signature = *options.signature;
    if (signature != "-" && options.from != SignatureForm::der) {
        return {.failure = std::nullopt, .content = signature};
    }
    if (signature.empty()) {
        return {.failure = "SIGNATURE: an empty path names no file", .content = {}};
    }
    SmallFile file = readSmallFile(signature, "signature");
    if (options.from != SignatureForm::der && file.content.ends_with('\n')) {
        file.content.pop_back();
    }
    return file;
}

int convertSignature(const ConvertOptions& options) {
    const SmallFile source = readSignatureBytes(options);
    if (source.failure.has_value()) {
        return reportFailure(*source.failure);
    }
    const SignatureReading signature = readSignatureAs(options.from, source.content);
    if (signature.refusal.has_value()) {
        const bool isArgument = *options.signature != "-" && options.from != SignatureForm::der;
        const std::string name = isArgument ? "" : inputName(*options.signature) + ": ";
        return reportFailure(name + signature.refusal->text);
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

int writeDigest(const std::string& path, bool json) {
    const FileDigest file = digestFile(path, Progress::silent);
    if (file.refusal.has_value()) {
        return reportFailure(file.refusal->text);
    }
    if (file.remark.has_value()) {
        reportRemark(*file.remark);
    }
    const ByteString digest(file.digest.rbegin(), file.digest.rend());
    if (json) {
        printJson({{"digest", hexadecimalDigits(digest)}});
    } else {
        printText({digest.begin(), digest.end()});
    }
    return exitDone;
}

}  // namespace

int convertCommand(const ConvertOptions& options) {
    return options.signature.has_value() ? convertSignature(options)
                                         : writeDigest(*options.digestOf, options.json);
}
