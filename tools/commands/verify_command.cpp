#include "tools/commands/verify_command.h"

#include <nlohmann/json.hpp>

#include "engine/verify.h"
#include "tools/commands/signed_file.h"
#include "tools/exit_status.h"
#include "tools/files/mapping_progress.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_check.h"
#include "tools/report.h"
#include "tools/rules.h"
#include "tools/signature/signature_reading.h"

namespace {

/// Why the verdict is false.
Refusal invalidity(const VerifyOptions& options, const PreparedOperation& operation) {
    const SignatureReading signature = readSignature(options.signature);
    if (signature.refusal.has_value()) {
        return *signature.refusal;
    }
    if (const auto unsound = unsoundKey(operation.project)) {
        return refusalBy(Verdict::unsoundKey, options.project + ": " + *unsound);
    }
    return refusalBy(Verdict::mismatch, mismatchReason(signature));
}

}  // namespace

int verifyCommand(const VerifyOptions& options) {
    PreparedOperation operation;
    if (const auto failure =
            prepareOperation(options.project, verifyingRefusal, options.file, operation)) {
        return reportFailure(*failure);
    }
    bool valid = false;
    {
        const MappingProgress progress(operation.input.bytes.size());
        valid = verifyWithRecord(operation.project, operation.input.bytes.data(),
                                 static_cast<std::uint32_t>(operation.input.bytes.size()),
                                 options.signature.c_str(), operation.key);
    }
    if (const auto failure = cutFailure(options.file, operation.input)) {
        return reportFailure(*failure);
    }
    const Refusal ruling = valid ? refusalBy(Verdict::valid, "") : invalidity(options, operation);
    if (options.json) {
        printJson({{"valid", valid}, {"rule", ruling.code}});
    } else {
        printText(valid ? "true\n" : "false\n");
    }
    if (valid) {
        return exitDone;
    }
    reportRemark(ruling.text);
    for (const std::string& remark : signatureRemarks(options.signature)) {
        reportRemark(remark);
    }
    return exitNegative;
}
