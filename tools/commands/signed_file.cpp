#include "tools/commands/signed_file.h"

#include <utility>

#include "tools/files/cut_file.h"
#include "tools/files/input_file.h"
#include "tools/project/project_reading.h"
#include "tools/report.h"

std::optional<std::string> mapSignedFile(const std::string& path, MappedInput& input) {
    // A copy of standard input has no name: the mapping keeps it.
    InputFile file;
    if (auto failure = openInputFile(path, file)) {
        return failure;
    }
    mapInputFile(input, file.path.c_str());
    if (const auto refusal = inputFileRefusal(input)) {
        return inputName(path) + ": " + refusal->text;
    }
    if (const auto remark = inputFileRemark(input)) {
        reportRemark(inputName(path) + ": " + *remark);
    }
    nameReadFile(inputName(path));
    return std::nullopt;
}

std::optional<std::string> cutFailure(const std::string& path, const MappedInput& input) {
    return input.isWhole() ? std::nullopt : std::optional(cutFileMessage(inputName(path)));
}

std::optional<std::string> prepareOperation(
    const std::string& projectPath,
    const std::function<std::optional<Refusal>(const ProjectFile&)>& keyRefusal,
    const std::string& filePath, PreparedOperation& operation) {
    ProjectReading reading = readProject(projectPath);
    if (reading.refusal.has_value()) {
        return projectPath + ": " + reading.refusal->text;
    }
    if (const auto refusal = keyRefusal(reading.project)) {
        return projectPath + ": " + refusal->text;
    }
    operation.project = std::move(reading.project);
    return mapSignedFile(filePath, operation.input);
}
