#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/hash.h"
#include "tools/refusal.h"

/// What signing and verifying take of a file: its RIPEMD-160 digest.
struct FileDigest {
    std::optional<Refusal> refusal{};     ///< why there is none, the file's name in front
    bool isMissing = false;               ///< there is no file
    std::optional<std::string> remark{};  ///< that a part of the file counts alone, the same way
    std::array<std::uint8_t, core::ripemd160DigestSize> digest{};  ///< as published
};

enum class Progress { silent, shown };

/// Digests the file at `path`, or what standard input holds ("-"), as the engine takes it. A bar
/// may show the progress (tools/files/mapping_progress.h).
FileDigest digestFile(const std::string& path, Progress progress);

/// Digests these files on all cores, and hands each, with its place in `paths`, to `take`: in their
/// order, in the calling thread, and as soon as those before it are taken. The progress of a single
/// file is shown. Digests may be computed beside each other (core/hash.h), signatures may not.
///
/// Standard input is read for the first "-" alone; for another one there is a refusal.
void digestFiles(const std::vector<std::string>& paths,
                 const std::function<void(std::size_t, const FileDigest&)>& take);
