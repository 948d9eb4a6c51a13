#include "tools/commands/strip_command.h"

#include "project/project_key_record.h"
#include "tools/exit_status.h"
#include "tools/project/project_reading.h"
#include "tools/project/project_writer.h"
#include "tools/report.h"

int stripCommand(const StripOptions& options) {
    ProjectReading reading = readProject(options.file);
    if (reading.refusal.has_value()) {
        return reportFailure(options.file + ": " + *reading.refusal);
    }
    reading.project.eraseAttribute(privateScalarAttribute);
    if (reading.project.attributes.empty()) {
        return reportFailure(options.file + ": holds no attribute but the private scalar, if any");
    }
    if (const auto failure = writeProjectFile(reading.project, options.output)) {
        return reportFailure(*failure);
    }
    return exitDone;
}
