#include "tools/commands/verify_command.h"

#include <nlohmann/json.hpp>

#include "engine/verify.h"
#include "tools/commands/signed_file.h"
#include "tools/exit_status.h"
#include "tools/files/mapping_progress.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_check.h"
#include "tools/report.h"
#include "tools/signature/signature_reading.h"

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
                                 options.signature.c_str());
    }
    if (const auto failure = cutFailure(options.file, operation.input)) {
        return reportFailure(*failure);
    }
    if (options.json) {
        printJson({{"valid", valid}});
    } else {
        printText(valid ? "true\n" : "false\n");
    }
    if (valid) {
        return exitDone;
    }
    const SignatureReading signature = readSignature(options.signature);
    const std::optional<std::string> unsound = unsoundKey(operation.project);
    if (signature.refusal.has_value()) {
        reportRemark(signature.refusal->text);
    } else if (unsound.has_value()) {
        reportRemark(options.project + ": " + *unsound);
    } else {
        reportRemark(mismatchReason(signature));
    }
    for (const std::string& remark : signatureRemarks(options.signature)) {
        reportRemark(remark);
    }
    return exitNegative;
}
