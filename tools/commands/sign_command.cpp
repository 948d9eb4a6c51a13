#include "tools/commands/sign_command.h"

#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "engine/sign.h"
#include "engine/signature_engine.h"
#include "tools/commands/signed_file.h"
#include "tools/exit_status.h"
#include "tools/files/mapping_progress.h"
#include "tools/files/random_device.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_check.h"
#include "tools/report.h"

int signCommand(const SignOptions& options) {
    if (const auto refusal = randomDeviceRefusal()) {
        return reportFailure(*refusal);
    }
    PreparedOperation operation;
    if (const auto failure =
            prepareOperation(options.project, signingRefusal, options.file, operation)) {
        return reportFailure(*failure);
    }
    std::array<char, signatureBufferSize> signature{};
    bool made = false;
    {
        const MappingProgress progress(operation.input.bytes.size());
        made = signWithRecord(operation.project, operation.input.bytes.data(),
                              static_cast<std::uint32_t>(operation.input.bytes.size()),
                              signature.data(), operation.key);
    }
    if (const auto failure = cutFailure(options.file, operation.input)) {
        return reportFailure(*failure);
    }
    if (!made) {
        return reportFailure(options.project +
                             ": yields no signature; 'projectctl check' says why");
    }
    if (const std::optional<std::string> unsound = unsoundKey(operation.project)) {
        reportRemark(options.project +
                     ": signatures under this key cannot be relied on: " + *unsound);
    }
    const std::string text = signature.data();
    if (options.json) {
        printJson({{"signature", text}});
    } else {
        printText(text + "\n");
    }
    return exitDone;
}
