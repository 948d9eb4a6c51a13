#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/hash.h"
#include "engine/mapped_file.h"
#include "tools/files/input_file.h"
#include "tools/refusal.h"

/// What signing and verifying take of a file: its RIPEMD-160 digest.
struct FileDigest {
    std::optional<Refusal> refusal{};     ///< why there is none, the file's name in front
    bool isMissing = false;               ///< there is no file
    std::optional<std::string> remark{};  ///< that a part of the file counts alone, the same way
    std::array<std::uint8_t, core::ripemd160DigestSize> digest{};  ///< as published
};

enum class Progress { silent, shown };

/// A file that has been digested, as the engine takes it, and is open for another look.
class DigestedFile {
public:
    /// The file at `path`, or what standard input holds ("-"). A bar may show the progress
    /// (tools/files/mapping_progress.h).
    DigestedFile(const std::string& path, Progress progress);

    const FileDigest& digest() const { return digest_; }

    /// A copy of the bytes that were digested. Nothing if there are more than `most`, if there is
    /// no digest, or if the file has lost some since.
    std::optional<std::string> content(std::size_t most) const;

private:
    InputFile file_;
    MappedInput input_;
    FileDigest digest_;
};

/// The digest of such a file alone.
FileDigest digestFile(const std::string& path, Progress progress);

/// Digests these files on all cores, and hands each, with its place in `paths`, to `take`: in their
/// order, in the calling thread, and as soon as those before it are taken. The progress of a single
/// file is shown. Digests may be computed beside each other (core/hash.h), signatures may not.
///
/// Standard input is read for the first "-" alone; for another one there is a refusal.
void digestFiles(const std::vector<std::string>& paths,
                 const std::function<void(std::size_t, const FileDigest&)>& take);
