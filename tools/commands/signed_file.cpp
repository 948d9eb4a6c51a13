#include "tools/commands/signed_file.h"

#include <utility>

#include "tools/files/cut_file.h"
#include "tools/project/project_reading.h"
#include "tools/report.h"

std::optional<std::string> prepareFile(const std::string& path, InputFile& file) {
    if (auto failure = openInputFile(path, file)) {
        return failure;
    }
    if (const auto refusal = inputFileRefusal(file.path)) {
        return inputName(path) + ": " + refusal->text;
    }
    if (const auto remark = inputFileRemark(file.path)) {
        reportRemark(inputName(path) + ": " + *remark);
    }
    nameReadFile(inputName(path));
    return std::nullopt;
}

std::optional<std::string> cutFailure(const std::string& path, const MappedInput& mapping) {
    return mapping.isWhole() ? std::nullopt : std::optional(cutFileMessage(inputName(path)));
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
    if (auto failure = prepareFile(filePath, operation.input)) {
        return failure;
    }
    operation.bytes = mapInputFile(operation.mapping, operation.input.path.c_str());
    if (operation.bytes.empty()) {
        return inputName(filePath) + ": has changed meanwhile";
    }
    operation.project = std::move(reading.project);
    return std::nullopt;
}
