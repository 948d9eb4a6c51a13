#include "tools/commands/create_command.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "tools/exit_status.h"
#include "tools/files/input_file.h"
#include "tools/files/random_device.h"
#include "tools/project/project_writer.h"
#include "tools/report.h"

namespace {

using Stream = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

/// More bytes than a scalar has with any sensible white space around it are not read.
constexpr std::size_t longestText = 4096;

/// What `path` holds, with one byte more than `longestText` if there are more.
std::optional<std::string> readText(const std::string& path) {
    const bool standardInput = path == "-";
    const Stream file(standardInput ? nullptr : std::fopen(path.c_str(), "rbe"), &std::fclose);
    std::FILE* stream = standardInput ? stdin : file.get();
    std::array<char, longestText + 1> text{};
    if (stream == nullptr) {
        return std::nullopt;
    }
    const std::size_t length = std::fread(text.data(), 1, text.size(), stream);
    if (std::ferror(stream) != 0) {
        return std::nullopt;
    }
    return std::string(text.data(), length);
}

}  // namespace

int createCommand(const CreateOptions& options) {
    if (const auto refusal = randomDeviceRefusal()) {
        return reportFailure(*refusal);
    }
    std::optional<core::FieldElement> scalar;
    if (options.scalarFile.has_value()) {
        const std::string& path = *options.scalarFile;
        const std::string name = inputName(path);
        const std::optional<std::string> text = readText(path);
        if (!text.has_value()) {
            return reportFailure(name + ": " + std::strerror(errno));
        }
        if (text->size() > longestText) {
            return reportFailure(name + ": has more than " + std::to_string(longestText) +
                                 " bytes, which is no scalar");
        }
        const ScalarReading reading = readScalar(*text);
        if (reading.refusal.has_value()) {
            return reportFailure(name + ": " + *reading.refusal);
        }
        scalar = reading.scalar;
    }
    if (const auto failure = writeProjectFile(newProject(options.base, scalar), options.file)) {
        return reportFailure(*failure);
    }
    return exitDone;
}
