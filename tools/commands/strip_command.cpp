#include "tools/commands/strip_command.h"

#include "tools/exit_status.h"
#include "tools/project/key_reading.h"
#include "tools/project/new_project.h"
#include "tools/project/project_reading.h"
#include "tools/project/project_writer.h"
#include "tools/report.h"

int stripCommand(const StripOptions& options) {
    const ProjectReading reading = readProject(options.file);
    if (reading.refusal.has_value()) {
        return reportFailure(options.file + ": " + reading.refusal->text);
    }
    if (const auto refusal = verifyingRefusal(reading.project)) {
        return reportFailure(options.file + ": " + refusal->text);
    }
    if (const auto failure = writeProjectFile(verifyingProject(reading.project), options.output)) {
        return reportFailure(*failure);
    }
    return exitDone;
}
