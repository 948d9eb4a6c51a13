#include "tools/commands/check_command.h"

#include <nlohmann/json.hpp>

#include "tools/exit_status.h"
#include "tools/files/random_device.h"
#include "tools/project/project_check.h"
#include "tools/report.h"
#include "tools/signature/key_fingerprint.h"

namespace {

nlohmann::ordered_json asJson(const ProjectFinding& finding) {
    nlohmann::ordered_json value{{"code", finding.code}};
    if (finding.attribute.has_value()) {
        value["attribute"] = *finding.attribute;
    }
    value["text"] = finding.text;
    return value;
}

void printCheckAsJson(const std::string& file, const ProjectCheck& check) {
    nlohmann::ordered_json findings = nlohmann::ordered_json::array();
    for (const ProjectFinding& finding : check.findings) {
        findings.push_back(asJson(finding));
    }
    nlohmann::ordered_json value{
        {"file", file}, {"sound", check.isSound()}, {"verifiesOnly", check.verifiesOnly}};
    if (const auto fingerprint = keyFingerprint(check.project)) {
        value["fingerprint"] = *fingerprint;
    }
    value["findings"] = findings;
    printJson(value);
}

void printCheck(const std::string& file, const ProjectCheck& check) {
    if (const auto fingerprint = keyFingerprint(check.project)) {
        printLine(file + ": fingerprint of the public key: " + *fingerprint);
    }
    for (const ProjectFinding& finding : check.findings) {
        printLine(file + ": " + finding.text);
    }
    if (check.isSound()) {
        printLine(file + ": sound" + (check.verifiesOnly ? ", for verifying only" : ""));
    }
}

}  // namespace

int checkCommand(const CheckOptions& options) {
    const ProjectCheck check = checkProject(options.file);
    if (check.unjudged.has_value()) {
        return reportFailure(options.file + ": " + *check.unjudged);
    }
    const bool signs = !check.verifiesOnly;
    if (const auto remark = signs ? randomDeviceRemark() : std::nullopt) {
        reportRemark(*remark);
    }
    (options.json ? printCheckAsJson : printCheck)(options.file, check);
    return check.isSound() ? exitDone : exitNegative;
}
