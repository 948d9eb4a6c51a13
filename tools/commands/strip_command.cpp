#include "tools/commands/strip_command.h"

#include "tools/exit_status.h"
#include "tools/project/key_reading.h"
#include "tools/project/new_project.h"
#include "tools/project/project_writer.h"
#include "tools/report.h"

int stripCommand(const StripOptions& options) {
    ProjectFile project;
    if (const auto failure = loadUsableProject(options.file, verifyingRefusal, project)) {
        return reportFailure(*failure);
    }
    if (const auto failure = writeProjectFile(verifyingProject(project), options.output)) {
        return reportFailure(*failure);
    }
    return exitDone;
}
