#include "tools/commands/false_verdict.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>

#include "core/entry.h"
#include "tools/exit_status.h"
#include "tools/files/input_file.h"
#include "tools/files/text_change.h"
#include "tools/report.h"
#include "tools/rules.h"
#include "tools/signature/byte_string.h"
#include "tools/signature/key_fingerprint.h"
#include "tools/signature/signature_reading.h"

namespace {

/// The change of the file that makes the signature valid.
const TextChange* changeThatHelps(const FalseVerdict& judged, SignatureVerdicts& verdicts) {
    const std::optional<std::string> content = judged.file.content(mostBytesTried);
    if (!content.has_value()) {
        return nullptr;
    }
    for (const TextChange& change : textChanges()) {
        const std::optional<std::string> changed = change.apply(*content);
        if (!changed.has_value()) {
            continue;
        }
        const ByteString bytes(changed->begin(), changed->end());
        FileDigest file;
        coreEntry::ripemd160Digest(bytes.data(), bytes.size(), file.digest.data());
        if (verdicts.of(file, judged.signature).isValid) {
            return &change;
        }
    }
    return nullptr;
}

/// Whether another file than the one in the place of the project is a project.
bool isOtherProject(const std::string& path, const VerifyOptions& options) {
    std::error_code ignored;
    return path != options.project && std::filesystem::is_regular_file(path, ignored) &&
           ProjectFile().load(path.c_str());
}

/// Whether the text is a signature of the usual length.
bool looksLikeSignature(const std::string& text) {
    constexpr std::size_t shortest = 40;
    return text.size() >= shortest && !readSignature(text).refusal.has_value();
}

}  // namespace

int reportFalse(const FalseVerdict& judged, SignatureVerdicts& verdicts) {
    const bool isMismatch = judged.verdict.ruling.code == ruleOf(Verdict::mismatch).code;
    const TextChange* change = isMismatch ? changeThatHelps(judged, verdicts) : nullptr;
    const std::string digest = hexadecimalDigits(judged.file.digest().digest);
    const std::optional<std::string> fingerprint = keyFingerprint(judged.project);
    if (judged.options.json) {
        nlohmann::ordered_json value{{"valid", false}, {"rule", judged.verdict.ruling.code}};
        if (change != nullptr) {
            value["change"] = change->code;
        }
        value["ripemd160"] = digest;
        if (fingerprint.has_value()) {
            value["fingerprint"] = *fingerprint;
        }
        printJson(value);
    } else {
        printText("false\n");
    }
    const std::string name = inputName(judged.options.file) + ": ";
    if (change != nullptr) {
        reportRemark(name + "differs from what was signed: the signature would be valid " +
                     change->words);
    } else {
        reportRemark(judged.verdict.ruling.text);
    }
    if (!judged.options.signatureFile.has_value() && isFile(judged.signature)) {
        reportRemark("SIGNATURE is the name of a file; --signature-file reads a signature from it");
    } else {
        for (const std::string& remark : signatureRemarks(judged.signature)) {
            reportRemark(remark);
        }
    }
    reportRemark(name + "RIPEMD-160 digest " + digest);
    reportFingerprint(judged.options, fingerprint);
    return exitNegative;
}

void reportFingerprint(const VerifyOptions& options,
                       const std::optional<std::string>& fingerprint) {
    if (fingerprint.has_value()) {
        reportRemark(options.project + ": fingerprint of the public key " + *fingerprint);
    }
}

void reportSwappedOperands(const VerifyOptions& options, bool isProjectLoaded) {
    const bool isProjectBehind = !isProjectLoaded && (isOtherProject(options.signature, options) ||
                                                      isOtherProject(options.file, options));
    const bool isSignatureBehind = looksLikeSignature(options.file) && isFile(options.signature);
    if (isProjectBehind || isSignatureBehind) {
        reportRemark(
            "the arguments seem to be in the wrong order; usage: "
            "projectctl verify PROJECT SIGNATURE [FILE]");
    }
}
