#include "tools/commands/verify_command.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>

#include "tools/commands/list_verification.h"
#include "tools/commands/signature_verdicts.h"
#include "tools/exit_status.h"
#include "tools/files/file_digest.h"
#include "tools/files/input_file.h"
#include "tools/files/small_file.h"
#include "tools/project/key_reading.h"
#include "tools/report.h"
#include "tools/signature/signature_reading.h"

namespace {

/// The signature that a file holds in one line.
SmallFile readSignatureFile(const std::string& path) {
    SmallFile file = readSmallFile(path, "signature");
    for (const char end : {'\n', '\r'}) {
        if (file.content.ends_with(end)) {
            file.content.pop_back();
        }
    }
    if (file.content.find('\n') != std::string::npos) {
        file.failure = inputName(path) +
                       ": has more than one line, and a signature has one; --check reads a list";
    }
    return file;
}

/// What is worth knowing of a signature that is not valid.
void reportRemarks(const VerifyOptions& options, const std::string& signature) {
    for (const std::string& remark : signatureRemarks(signature)) {
        reportRemark(remark);
    }
    std::error_code ignored;
    if (!options.signatureFile.has_value() && std::filesystem::exists(signature, ignored)) {
        reportRemark("SIGNATURE is the name of a file; --signature-file reads a signature from it");
    }
}

int verifySignature(const VerifyOptions& options, const ProjectFile& project) {
    const SmallFile source = options.signatureFile.has_value()
                                 ? readSignatureFile(*options.signatureFile)
                                 : SmallFile{.failure = std::nullopt, .content = options.signature};
    if (source.failure.has_value()) {
        return reportFailure(*source.failure);
    }
    const FileDigest digest = digestFile(options.file, Progress::shown);
    if (digest.refusal.has_value()) {
        return reportFailure(digest.refusal->text);
    }
    if (digest.remark.has_value()) {
        reportRemark(*digest.remark);
    }
    const SignatureVerdict verdict =
        SignatureVerdicts(options.project, project).of(digest, source.content);
    if (options.json) {
        printJson({{"valid", verdict.isValid}, {"rule", verdict.ruling.code}});
    } else {
        printText(verdict.isValid ? "true\n" : "false\n");
    }
    if (verdict.isValid) {
        return exitDone;
    }
    reportRemark(verdict.ruling.text);
    reportRemarks(options, source.content);
    return exitNegative;
}

}  // namespace

int verifyCommand(const VerifyOptions& options) {
    ProjectFile project;
    if (const auto failure = loadUsableProject(options.project, verifyingRefusal, project)) {
        return reportFailure(*failure);
    }
    return options.list.has_value() ? verifyList(options, project)
                                    : verifySignature(options, project);
}
