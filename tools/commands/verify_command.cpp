#include "tools/commands/verify_command.h"

#include <nlohmann/json.hpp>

#include "engine/signature_engine.h"
#include "tools/commands/signed_file.h"
#include "tools/exit_status.h"
#include "tools/files/mapping_progress.h"
#include "tools/project/key_reading.h"
#include "tools/report.h"
#include "tools/signature/signature_reading.h"

int verifyCommand(const VerifyOptions& options) {
    InputFile file;
    if (const auto failure =
            prepareOperation(options.project, verifyingRefusal, options.file, file)) {
        return reportFailure(*failure);
    }
    bool valid = false;
    {
        const MappingProgress progress(countedSize(file));
        valid = verifyFile(options.project.c_str(), file.path.c_str(), options.signature.c_str());
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
    reportRemark(signature.refusal.value_or(mismatchReason(signature)));
    return exitNegative;
}
