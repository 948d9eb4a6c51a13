#include "tools/commands/verify_command.h"

#include <nlohmann/json.hpp>

#include "tools/commands/false_verdict.h"
#include "tools/commands/list_verification.h"
#include "tools/commands/signature_verdicts.h"
#include "tools/exit_status.h"
#include "tools/files/file_digest.h"
#include "tools/files/input_file.h"
#include "tools/files/small_file.h"
#include "tools/project/key_reading.h"
#include "tools/report.h"

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

int verifySignature(const VerifyOptions& options, const ProjectFile& project) {
    const SmallFile source = options.signatureFile.has_value()
                                 ? readSignatureFile(*options.signatureFile)
                                 : SmallFile{.failure = std::nullopt, .content = options.signature};
    if (source.failure.has_value()) {
        return reportFailure(*source.failure);
    }
    const DigestedFile file(options.file, Progress::shown);
    if (file.digest().refusal.has_value()) {
        reportFailure(file.digest().refusal->text);
        reportSwappedOperands(options, true);
        return exitFailed;
    }
    if (file.digest().remark.has_value()) {
        reportRemark(*file.digest().remark);
    }
    SignatureVerdicts verdicts(options.project, project);
    const SignatureVerdict verdict = verdicts.of(file.digest(), source.content);
    if (!verdict.isValid) {
        return reportFalse({options, project, file, source.content, verdict}, verdicts);
    }
    if (options.json) {
        printJson({{"valid", true}, {"rule", verdict.ruling.code}});
    } else {
        printText("true\n");
    }
    return exitDone;
}

}  // namespace

int verifyCommand(const VerifyOptions& options) {
    ProjectFile project;
    if (const auto failure = loadUsableProject(options.project, verifyingRefusal, project)) {
        reportFailure(*failure);
        reportSwappedOperands(options, false);
        return exitFailed;
    }
    return options.list.has_value() ? verifyList(options, project)
                                    : verifySignature(options, project);
}
