#include "tools/project/project_reading.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>

#include "core/entry.h"
#include "project/open_to_read.h"
#include "tools/counted_text.h"

namespace {

constexpr std::uint64_t headerSize = sizeof(ProjectFileHeader);
constexpr std::uint64_t entrySize = sizeof(ProjectEntry);
constexpr std::string_view magic = "VLT2";
constexpr const char* unreadableCode = "project.unreadable";

/// A file opened beside the program's own reading, to see what that met.
class OpenedFile {
public:
    explicit OpenedFile(const std::string& path) : descriptor_(openToRead(path.c_str())) {
        if (isOpen() && ::fstat(descriptor_, &status_) != 0) {
            status_ = {};
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
    std::uint64_t size() const { return static_cast<std::uint64_t>(status_.st_size); }

    /// Whether all of these bytes could be read.
    bool read(std::uint64_t offset, void* buffer, std::uint64_t count) const {
        auto* bytes = static_cast<char*>(buffer);
        while (count > 0) {
            const ssize_t taken = ::pread(descriptor_, bytes, count, static_cast<off_t>(offset));
            if (taken <= 0) {
                return false;
            }
            bytes += taken;
            offset += static_cast<std::uint64_t>(taken);
            count -= static_cast<std::uint64_t>(taken);
        }
        return true;
    }

private:
    int descriptor_;
    struct stat status_ {};
};

/// The header; one without entries if there is none.
ProjectFileHeader readHeader(const OpenedFile& file) {
    ProjectFileHeader header;
    return file.read(0, &header, sizeof header) ? header : ProjectFileHeader{};
}

/// As many entries of the directory, up to this count, as the file has; none if they cannot be
/// read.
std::vector<ProjectEntry> readEntries(const OpenedFile& file, std::uint32_t count) {
    std::vector<ProjectEntry> entries(
        std::min<std::uint64_t>(count, (file.size() - headerSize) / entrySize));
    if (!file.read(headerSize, entries.data(), entrySize * entries.size())) {
        entries.clear();
    }
    return entries;
}

bool digestDiffers(const OpenedFile& file, const ProjectFileHeader& header) {
    std::vector<std::uint8_t> body(file.size() - headerSize);
    std::array<std::uint8_t, 16> digest{};
    if (!file.read(headerSize, body.data(), body.size())) {
        return false;
    }
    coreEntry::md5Digest(body.data(), body.size(), digest.data());
    return digest != header.bodyDigest;
}

/// What is wrong with the first entry that the program refuses, if there is one.
std::optional<Refusal> entryRefusal(const OpenedFile& file,
                                    const std::vector<ProjectEntry>& entries) {
    const auto refused =
        std::find_if(entries.begin(), entries.end(), [&file](const ProjectEntry& entry) {
            return entry.size == 0 || std::uint64_t{entry.offset} + entry.size > file.size();
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
                       std::to_string(file.size())};
}

/// Why the program does not load this file, in the order of its own steps.
Refusal refusalOf(const OpenedFile& file, const ProjectFileHeader& header) {
    if (file.isFolder()) {
        return {"project.directory", "is a directory"};
    }
    if (!file.isRegular()) {
        return {"project.no-regular", "is no regular file"};
    }
    if (file.size() < headerSize) {
        return {"project.header",
                "has " + counted(file.size(), "byte") + ", fewer than the 24 of a header"};
    }
    if (std::string_view(header.magic.data(), header.magic.size()) != magic) {
        return {"project.magic", "is no project file: it does not begin with VLT2"};
    }
    if (file.size() == headerSize) {
        return {"project.no-body", "has a header that counts " +
                                       counted(header.entryCount, "entry", "entries") +
                                       ", and nothing behind it"};
    }
    if (digestDiffers(file, header)) {
        return {"project.digest", "is damaged: the digest in its header is not that of its body"};
    }
    const std::vector<ProjectEntry> entries = readEntries(file, header.entryCount);
    if (entries.size() < header.entryCount) {
        return {"project.entries", "the directory ends after " + std::to_string(entries.size()) +
                                       " of " + counted(header.entryCount, "entry", "entries")};
    }
    if (const auto refusal = entryRefusal(file, entries)) {
        return *refusal;
    }
    return {unreadableCode, "cannot be read"};
}

ProjectReading readWithMemory(const std::string& path) {
    ProjectReading reading;
    const bool loaded = reading.project.load(path.c_str());
    const OpenedFile file(path);
    if (!file.isOpen()) {
        reading.refusal =
            Refusal{"project.open", std::string("cannot be opened: ") + std::strerror(errno)};
        reading.unreadable = true;
        reading.project.clear();
        return reading;
    }
    if (!loaded) {
        reading.refusal = refusalOf(file, readHeader(file));
        reading.unreadable = !file.isRegular() || reading.refusal->code == unreadableCode;
    }
    return reading;
}

}  // namespace

ProjectReading readProject(const std::string& path) {
    try {
        return readWithMemory(path);
    } catch (const std::bad_alloc&) {
        ProjectReading reading;
        reading.refusal = Refusal{"project.memory", "there is not enough memory to load it"};
        reading.unreadable = true;
        return reading;
    }
}
