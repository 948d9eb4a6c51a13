#include "tools/commands/export_command.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string_view>

#include "tools/exit_status.h"
#include "tools/project/project_check.h"
#include "tools/project/project_reading.h"
#include "tools/report.h"
#include "tools/signature/key_export.h"

namespace {

/// Findings by which other software would not read the key, or read a wrong one.
bool spoilsKey(const ProjectFinding& finding, bool privateKey) {
    constexpr std::array<std::string_view, 5> ofPoints = {"short-coordinate", "infinity",
                                                          "off-curve", "x-zero", "wrong-order"};
    return std::find(ofPoints.begin(), ofPoints.end(), finding.code) != ofPoints.end() ||
           (privateKey && finding.code == "key-mismatch");
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
    for (const ProjectFinding& finding : checkProject(options.file).findings) {
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
