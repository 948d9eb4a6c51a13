#include "tools/commands/sign_command.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>

#include "engine/sign.h"
#include "engine/signature_engine.h"
#include "tools/exit_status.h"
#include "tools/files/file_digest.h"
#include "tools/files/random_device.h"
#include "tools/files/whole_file.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_check.h"
#include "tools/report.h"
#include "tools/signature/signature_list.h"

namespace {

/// The signature of a file; without one, says why.
std::optional<std::string> signatureOf(const SignOptions& options, const ProjectFile& project,
                                       const FileDigest& file) {
    if (file.refusal.has_value()) {
        reportRemark(file.refusal->text);
        return std::nullopt;
    }
    if (file.remark.has_value()) {
        reportRemark(*file.remark);
    }
    std::array<char, signatureBufferSize> signature{};
    KeyReport key;
    if (!signDigestWithRecord(project, file.digest.data(), signature.data(), key)) {
        reportRemark(options.project + ": yields no signature; 'projectctl check' says why");
        return std::nullopt;
    }
    return signature.data();
}

/// What is to be printed of a signature.
std::string lineOf(const SignOptions& options, const std::string& file,
                   const std::string& signature) {
    const bool isSingle = options.files.size() == 1;
    if (!options.json) {
        return isSingle ? signature + "\n" : listLine({.signature = signature, .file = file});
    }
    nlohmann::ordered_json value;
    if (!isSingle) {
        value["file"] = file;
    }
    value["signature"] = signature;
    return jsonText(value) + "\n";
}

}  // namespace

int signCommand(const SignOptions& options) {
    if (const auto refusal = randomDeviceRefusal()) {
        return reportFailure(*refusal);
    }
    ProjectFile project;
    if (const auto failure = loadUsableProject(options.project, signingRefusal, project)) {
        return reportFailure(*failure);
    }
    const bool isPrinted = options.output == "-";
    std::size_t made = 0;
    std::string content;
    digestFiles(options.files, [&](std::size_t place, const FileDigest& file) {
        if (const auto signature = signatureOf(options, project, file)) {
            ++made;
            const std::string line = lineOf(options, options.files[place], *signature);
            if (isPrinted) {
                printText(line);
            } else {
                content += line;
            }
        }
    });
    const std::optional<std::string> unsound = made != 0 ? unsoundKey(project) : std::nullopt;
    if (unsound.has_value()) {
        reportRemark(options.project +
                     ": signatures under this key cannot be relied on: " + *unsound);
    }
    if (made != options.files.size()) {
        return isPrinted ? exitFailed
                         : reportFailure(options.output +
                                         ": not written, because a file could not be signed");
    }
    if (isPrinted) {
        return exitDone;
    }
    const auto failure =
        writeWholeFile(options.output, FileAudience::everybody, [&](std::FILE* stream) {
            return std::fwrite(content.data(), content.size(), 1, stream) == 1;
        });
    return failure.has_value() ? reportFailure(*failure) : exitDone;
}
