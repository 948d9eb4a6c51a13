#include "tools/commands/export_command.h"

#include <nlohmann/json.hpp>

#include "tools/exit_status.h"
#include "tools/project/project_check.h"
#include "tools/project/project_reading.h"
#include "tools/report.h"
#include "tools/signature/key_export.h"

namespace {

/// Whether other software would not read the key, or read a wrong one.
bool spoilsKey(const ProjectFinding& finding, bool privateKey) {
    return finding.damage == KeyDamage::points ||
           (privateKey && finding.damage == KeyDamage::scalar);
}

}  // namespace

int exportCommand(const ExportOptions& options) {
    const ProjectReading reading = readProject(options.file);
    if (reading.refusal.has_value()) {
        return reportFailure(options.file + ": " + reading.refusal->text);
    }
    const KeyExport made =
        options.privateKey ? exportPrivateKey(reading.project) : exportPublicKey(reading.project);
    if (made.refusal.has_value()) {
        return reportFailure(options.file + ": " + *made.refusal);
    }
    for (const ProjectFinding& finding : checkKey(reading.project)) {
        if (spoilsKey(finding, options.privateKey)) {
            return reportFailure(options.file + ": " + finding.text);
        }
    }
    if (options.json) {
        printJson({{"pem", made.pem}});
    } else {
        printText(made.pem);
    }
    return exitDone;
}
