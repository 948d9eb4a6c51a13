#include "tools/project/project_reading.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

#include "tools/counted_text.h"
#include "tools/rules.h"

namespace {

/// What stands at the path, if that is no regular file: nothing else is to be said of its content.
std::optional<Refusal> kindRefusal(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    if (fs::is_directory(status)) {
        return refusalBy(Outcome::projectDirectory, "is a directory");
    }
    if (fs::is_other(status)) {
        return refusalBy(Outcome::projectNotRegular, "not a regular file");
    }
    return std::nullopt;
}

std::string withError(const std::string& text, int error) {
    return error == 0 ? text : text + ": " + std::strerror(error);
}

/// "entry 2 (attribute 7)".
std::string namedEntry(const ProjectLoading& loading) {
    return "entry " + std::to_string(std::uint64_t{loading.refusedEntry} + 1) + " (attribute " +
           std::to_string(loading.entry.id) + ")";
}

std::string wordsOf(const ProjectLoading& loading) {
    const std::string entries = counted(loading.entryCount, "entry", "entries");
    switch (loading.fault) {
        case ProjectFault::open:
            return withError("cannot be opened", loading.error);
        case ProjectFault::header:
            return "not a project file (" + counted(loading.fileSize, "byte") +
                   "; a header needs 24)";
        case ProjectFault::magic:
            return "not a project file (it does not begin with VLT2)";
        case ProjectFault::noBody:
            return "has a header that counts " + entries + ", and nothing after it";
        case ProjectFault::digest:
            return "is damaged: the digest in its header is not that of its body";
        case ProjectFault::directory:
            return "the directory ends after " + std::to_string(loading.refusedEntry) + " of " +
                   entries;
        case ProjectFault::emptyValue:
            return namedEntry(loading) + " has a size of 0";
        case ProjectFault::valueRange:
            return namedEntry(loading) +
                   " runs past the end of the file: " + counted(loading.entry.size, "byte") +
                   " at offset " + std::to_string(loading.entry.offset) + ", and the file has " +
                   std::to_string(loading.fileSize);
        default:
            return withError("cannot be read", loading.error);
    }
}

/// Whether a refusal says nothing of the content.
bool isUnreadable(const std::string& code) {
    const auto causes =
        std::to_array<Cause>({ProjectFault::open, ProjectFault::unreadable,
                              Outcome::projectDirectory, Outcome::projectNotRegular});
    return std::any_of(causes.begin(), causes.end(),
                       [&](const Cause& cause) { return ruleOf(cause).code == code; });
}

}  // namespace

std::optional<Refusal> loadingRefusal(const ProjectLoading& loading, const std::string& path) {
    if (loading.fault == ProjectFault::none) {
        return std::nullopt;
    }
    const bool opened = loading.fault != ProjectFault::open;
    const auto refusal = opened ? kindRefusal(path) : std::nullopt;
    return refusal.has_value() ? refusal : refusalBy(loading.fault, wordsOf(loading));
}

ProjectReading readProject(const std::string& path) {
    try {
        ProjectReading reading;
        reading.refusal = loadingRefusal(reading.project.loadReporting(path.c_str()), path);
        reading.unreadable = reading.refusal.has_value() && isUnreadable(reading.refusal->code);
        return reading;
    } catch (const std::bad_alloc&) {
        return {
            .refusal = refusalBy(Verdict::projectMemory, "there is not enough memory to load it"),
            .unreadable = true,
            .project = {}};
    }
}
