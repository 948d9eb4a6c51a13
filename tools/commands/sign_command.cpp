#include "tools/commands/sign_command.h"

#include <array>
#include <nlohmann/json.hpp>

#include "engine/signature_engine.h"
#include "tools/commands/signed_file.h"
#include "tools/exit_status.h"
#include "tools/files/mapping_progress.h"
#include "tools/project/key_reading.h"
#include "tools/report.h"

int signCommand(const SignOptions& options) {
    InputFile file;
    if (const auto failure =
            prepareOperation(options.project, signingRefusal, options.file, file)) {
        return reportFailure(*failure);
    }
    std::array<char, signatureBufferSize> signature{};
    bool made = false;
    {
        const MappingProgress progress(countedSize(file));
        made = signFile(options.project.c_str(), file.path.c_str(), signature.data());
    }
    if (!made) {
        return reportFailure(options.project +
                             ": yields no signature; 'projectctl check' says why");
    }
    const std::string text = signature.data();
    if (options.json) {
        printJson({{"signature", text}});
    } else {
        printText(text + "\n");
    }
    return exitDone;
}
