#include "tools/commands/create_command.h"

#include <optional>
#include <string>

#include "tools/exit_status.h"
#include "tools/files/input_file.h"
#include "tools/files/random_device.h"
#include "tools/files/small_file.h"
#include "tools/project/project_writer.h"
#include "tools/report.h"

int createCommand(const CreateOptions& options) {
    if (const auto refusal = randomDeviceRefusal()) {
        return reportFailure(*refusal);
    }
    std::optional<core::FieldElement> scalar;
    if (options.scalarFile.has_value()) {
        const std::string& path = *options.scalarFile;
        const SmallFile file = readSmallFile(path, "scalar");
        if (file.failure.has_value()) {
            return reportFailure(*file.failure);
        }
        const ScalarReading reading = readScalar(file.content);
        if (reading.refusal.has_value()) {
            return reportFailure(inputName(path) + ": " + *reading.refusal);
        }
        scalar = reading.scalar;
    }
    if (const auto failure = writeProjectFile(newProject(options.base, scalar), options.file)) {
        return reportFailure(*failure);
    }
    return exitDone;
}
