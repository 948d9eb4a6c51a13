#pragma once

#include <optional>
#include <string>
#include <utility>

#include "project/project_file.h"
#include "tools/files/file_digest.h"
#include "tools/refusal.h"

struct SignatureVerdict {
    bool isValid = false;
    Refusal ruling;  ///< the rule that decides, in words if it is not valid
};

/// What signatures under the key of one project are judged.
class SignatureVerdicts {
public:
    /// The project is one without a `verifyingRefusal`; it must outlive this.
    SignatureVerdicts(std::string path, const ProjectFile& project)
        : path_(std::move(path)), project_(project) {}

    /// The verdict on the signature of a file whose digest is known.
    SignatureVerdict of(const FileDigest& file, const std::string& signature);

    /// Why no signature under the key can be relied on, the path in front, if that is so.
    const std::optional<std::string>& keyFault();

private:
    const std::string path_;
    const ProjectFile& project_;
    std::optional<std::optional<std::string>> keyFault_;  ///< once it has been asked for
};
