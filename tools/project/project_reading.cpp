#include "tools/project/project_reading.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "core/entry.h"
#include "project/open_to_read.h"
#include "tools/counted_text.h"

namespace {

constexpr std::uint64_t headerSize = sizeof(ProjectFileHeader);
constexpr std::uint64_t entrySize = sizeof(ProjectEntry);
constexpr std::string_view magic = "VLT2";

using Content = std::vector<std::uint8_t>;

/// A file opened beside the program's own reading, to see what that met.
class OpenedFile {
public:
    explicit OpenedFile(const std::string& path) : descriptor_(openToRead(path.c_str())) {
        if (isOpen()) {
            ::fstat(descriptor_, &status_);
        }
    }
    ~OpenedFile() {
        if (isOpen()) {
            ::close(descriptor_);
        }
    }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    bool isOpen() const { return descriptor_ != -1; }
    bool isFolder() const { return S_ISDIR(status_.st_mode); }
    bool isRegular() const { return S_ISREG(status_.st_mode); }

    /// All bytes of a regular file; nothing if it has fewer by now, or they cannot be read.
    std::optional<Content> content() const {
        Content bytes(static_cast<std::size_t>(status_.st_size));
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t taken = ::pread(descriptor_, bytes.data() + done, bytes.size() - done,
                                          static_cast<off_t>(done));
            if (taken <= 0) {
                return std::nullopt;
            }
            done += static_cast<std::size_t>(taken);
        }
        return bytes;
    }

private:
    int descriptor_;
    struct stat status_ {};
};

bool digestDiffers(const Content& content, const ProjectFileHeader& header) {
    std::array<std::uint8_t, 16> digest{};
    coreEntry::md5Digest(content.data() + headerSize, content.size() - headerSize, digest.data());
    return digest != header.bodyDigest;
}

/// As many entries of the directory, up to this count, as there are.
std::vector<ProjectEntry> readEntries(const Content& content, std::uint32_t count) {
    std::vector<ProjectEntry> entries(
        std::min<std::uint64_t>(count, (content.size() - headerSize) / entrySize));
    std::memcpy(entries.data(), content.data() + headerSize, entrySize * entries.size());
    return entries;
}

/// What is wrong with the first entry that the program refuses, if there is one.
std::optional<Refusal> entryRefusal(std::uint64_t fileSize,
                                    const std::vector<ProjectEntry>& entries) {
    const auto refused =
        std::find_if(entries.begin(), entries.end(), [fileSize](const ProjectEntry& entry) {
            return entry.size == 0 || std::uint64_t{entry.offset} + entry.size > fileSize;
        });
    if (refused == entries.end()) {
        return std::nullopt;
    }
    const std::string name = "entry " + std::to_string(refused - entries.begin() + 1) +
                             " (attribute " + std::to_string(refused->id) + ") ";
    if (refused->size == 0) {
        return Refusal{"project.entry-empty", name + "has a size of 0"};
    }
    return Refusal{"project.entry-range",
                   name + "runs past the end of the file: " + counted(refused->size, "byte") +
                       " at offset " + std::to_string(refused->offset) + ", and the file has " +
                       std::to_string(fileSize)};
}

/// Why the program does not load these bytes, in the order of its own steps.
std::optional<Refusal> contentRefusal(const Content& content) {
    if (content.size() < headerSize) {
        return Refusal{"project.header", "has " + counted(content.size(), "byte") +
                                             ", fewer than the 24 of a header"};
    }
    ProjectFileHeader header;
    std::memcpy(&header, content.data(), sizeof header);
    if (std::string_view(header.magic.data(), header.magic.size()) != magic) {
        return Refusal{"project.magic", "is no project file: it does not begin with VLT2"};
    }
    if (content.size() == headerSize) {
        return Refusal{"project.no-body", "has a header that counts " +
                                              counted(header.entryCount, "entry", "entries") +
                                              ", and nothing behind it"};
    }
    if (digestDiffers(content, header)) {
        return Refusal{"project.digest",
                       "is damaged: the digest in its header is not that of its body"};
    }
    const std::vector<ProjectEntry> entries = readEntries(content, header.entryCount);
    if (entries.size() < header.entryCount) {
        return Refusal{"project.entries", "the directory ends after " +
                                              std::to_string(entries.size()) + " of " +
                                              counted(header.entryCount, "entry", "entries")};
    }
    return entryRefusal(content.size(), entries);
}

/// Why the program does not load this file, and whether that says nothing of its content.
ProjectReading refusedReading(const OpenedFile& file) {
    if (!file.isOpen()) {
        return {.refusal = Refusal{"project.open",
                                   std::string("cannot be opened: ") + std::strerror(errno)},
                .unreadable = true,
                .project = {}};
    }
    if (!file.isRegular()) {
        return {.refusal = file.isFolder() ? Refusal{"project.directory", "is a directory"}
                                           : Refusal{"project.no-regular", "is no regular file"},
                .unreadable = true,
                .project = {}};
    }
    const std::optional<Content> content = file.content();
    if (std::optional<Refusal> refusal =
            content.has_value() ? contentRefusal(*content) : std::nullopt) {
        return {.refusal = std::move(refusal), .unreadable = false, .project = {}};
    }
    return {.refusal = Refusal{"project.unreadable", "cannot be read"},
            .unreadable = true,
            .project = {}};
}

}  // namespace

ProjectReading readProject(const std::string& path) {
    try {
        ProjectReading reading;
        if (!reading.project.load(path.c_str())) {
            reading = refusedReading(OpenedFile(path));
        }
        return reading;
    } catch (const std::bad_alloc&) {
        return {.refusal = Refusal{"project.memory", "there is not enough memory to load it"},
                .unreadable = true,
                .project = {}};
    }
}
