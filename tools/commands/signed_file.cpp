#include "tools/commands/signed_file.h"

#include "engine/mapped_file.h"
#include "tools/project/project_reading.h"
#include "tools/report.h"

std::optional<std::string> prepareFile(const std::string& path, InputFile& file) {
    if (auto failure = openInputFile(path, file)) {
        return failure;
    }
    if (const auto refusal = inputFileRefusal(file.path)) {
        return inputName(path) + ": " + *refusal;
    }
    if (const auto remark = inputFileRemark(file.path)) {
        reportRemark(inputName(path) + ": " + *remark);
    }
    return std::nullopt;
}

std::optional<std::string> prepareOperation(
    const std::string& projectPath,
    const std::function<std::optional<std::string>(const ProjectFile&)>& keyRefusal,
    const std::string& filePath, InputFile& file) {
    const ProjectReading reading = readProject(projectPath);
    if (reading.refusal.has_value()) {
        return projectPath + ": " + *reading.refusal;
    }
    if (const auto refusal = keyRefusal(reading.project)) {
        return projectPath + ": " + *refusal;
    }
    return prepareFile(filePath, file);
}

std::uint32_t countedSize(const InputFile& file) {
    MappedFile mapped;
    return mapped.open(file.path.c_str()) ? mapped.size() : 0;
}
