#include "tools/commands/convert_command.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>
#include <span>
#include <utility>

#include "core/hash.h"
#include "engine/mapped_file.h"
#include "tools/commands/signed_file.h"
#include "tools/exit_status.h"
#include "tools/files/input_file.h"
#include "tools/report.h"
#include "tools/signature/byte_string.h"

namespace {

/// More bytes than any form of a signature takes are no signature and are not read.
constexpr std::size_t longestSignature = 4096;

/// What a signature or a digest is made of, or why there is none.
struct Content {
    std::optional<std::string> failure;
    std::string bytes;
};

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

Content readStream(std::FILE* stream, const std::string& name) {
    std::string bytes(longestSignature + 1, '\0');
    errno = 0;
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), stream));
    if (std::ferror(stream) != 0) {
        return {.failure = name + ": " + std::strerror(errno), .bytes = {}};
    }
    if (bytes.size() > longestSignature) {
        return {.failure = name + ": has more than " + std::to_string(longestSignature) +
                           " bytes, which is no signature",
                .bytes = {}};
    }
    return {.failure = {}, .bytes = std::move(bytes)};
}

/// The bytes of the signature, without the line feed that ends a text on standard input.
Content readSignatureBytes(const ConvertOptions& options) {
    const std::string& signature = *options.signature;
    if (signature == "-") {
        Content content = readStream(stdin, inputName(signature));
        if (options.from != SignatureForm::der && content.bytes.ends_with('\n')) {
            content.bytes.pop_back();
        }
        return content;
    }
    if (options.from != SignatureForm::der) {
        return {.failure = {}, .bytes = signature};
    }
    if (signature.empty()) {
        return {.failure = "SIGNATURE: an empty path names no file", .bytes = {}};
    }
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(signature.c_str(), "rbe"));
    if (file == nullptr) {
        return {.failure = signature + ": " + std::strerror(errno), .bytes = {}};
    }
    return readStream(file.get(), signature);
}

int convertSignature(const ConvertOptions& options) {
    const Content content = readSignatureBytes(options);
    if (content.failure.has_value()) {
        return reportFailure(*content.failure);
    }
    const SignatureReading signature = readSignatureAs(options.from, content.bytes);
    if (signature.refusal.has_value()) {
        const bool isArgument = *options.signature != "-" && options.from != SignatureForm::der;
        const std::string source = isArgument ? "" : inputName(*options.signature) + ": ";
        return reportFailure(source + signature.refusal->text);
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
    InputFile file;
    if (const auto failure = prepareFile(path, file)) {
        return reportFailure(*failure);
    }
    MappedInput mapped;
    const std::span<const std::uint8_t> bytes = mapInputFile(mapped, file.path.c_str());
    if (bytes.empty()) {
        return reportFailure(inputName(path) + ": has changed meanwhile");
    }
    ByteString digest(core::ripemd160DigestSize);
    core::ripemd160Digest(bytes.data(), bytes.size(), digest.data());
    if (const auto failure = cutFailure(path, mapped)) {
        return reportFailure(*failure);
    }
    std::reverse(digest.begin(), digest.end());
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
