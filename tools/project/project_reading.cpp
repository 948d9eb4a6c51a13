#include "tools/project/project_reading.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

#include "tools/counted_text.h"

namespace {

/// What stands at the path, if that is no regular file: nothing else is to be said of its content.
std::optional<Refusal> kindRefusal(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    if (fs::is_directory(status)) {
        return Refusal{"project.directory", "is a directory"};
    }
    if (fs::is_other(status)) {
        return Refusal{"project.no-regular", "is no regular file"};
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

/// The fault in words.
Refusal refusalOf(const ProjectLoading& loading) {
    switch (loading.fault) {
        case ProjectFault::open:
            return {"project.open", withError("cannot be opened", loading.error)};
        case ProjectFault::header:
            return {"project.header",
                    "has " + counted(loading.fileSize, "byte") + ", fewer than the 24 of a header"};
        case ProjectFault::magic:
            return {"project.magic", "is no project file: it does not begin with VLT2"};
        case ProjectFault::unreadable:
            return {"project.unreadable", withError("cannot be read", loading.error)};
        case ProjectFault::noBody:
            return {"project.no-body", "has a header that counts " +
                                           counted(loading.entryCount, "entry", "entries") +
                                           ", and nothing behind it"};
        case ProjectFault::digest:
            return {"project.digest",
                    "is damaged: the digest in its header is not that of its body"};
        case ProjectFault::directory:
            return {"project.entries", "the directory ends after " +
                                           std::to_string(loading.refusedEntry) + " of " +
                                           counted(loading.entryCount, "entry", "entries")};
        case ProjectFault::emptyValue:
            return {"project.entry-empty", namedEntry(loading) + " has a size of 0"};
        case ProjectFault::valueRange:
            return {"project.entry-range",
                    namedEntry(loading) +
                        " runs past the end of the file: " + counted(loading.entry.size, "byte") +
                        " at offset " + std::to_string(loading.entry.offset) +
                        ", and the file has " + std::to_string(loading.fileSize)};
        case ProjectFault::none:
            break;
    }
    return {};
}

ProjectReading refusedReading(const ProjectLoading& loading, const std::string& path) {
    const bool opened = loading.fault != ProjectFault::open;
    if (auto refusal = opened ? kindRefusal(path) : std::nullopt) {
        return {.refusal = std::move(refusal), .unreadable = true, .project = {}};
    }
    return {.refusal = refusalOf(loading),
            .unreadable = !opened || loading.fault == ProjectFault::unreadable,
            .project = {}};
}

}  // namespace

ProjectReading readProject(const std::string& path) {
    try {
        ProjectReading reading;
        const ProjectLoading loading = reading.project.loadReporting(path.c_str());
        if (loading.fault != ProjectFault::none) {
            reading = refusedReading(loading, path);
        }
        return reading;
    } catch (const std::bad_alloc&) {
        return {.refusal = Refusal{"project.memory", "there is not enough memory to load it"},
                .unreadable = true,
                .project = {}};
    }
}
