#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>

#include "core/entry.h"
#include "project/open_to_read.h"
#include "project/project_file.h"
#include "project/stream.h"

namespace {

constexpr std::array<char, 4> magic = {'V', 'L', 'T', '2'};
constexpr long headerSize = 24;

// The records are read and written as they stand in memory.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(ProjectFileHeader) == headerSize && sizeof(ProjectEntry) == 12);

/// Opens for binary reading.
Stream openForReading(const char* path) {
    const int descriptor = openToRead(path);
    if (descriptor == -1) {
        return nullptr;
    }
    Stream stream(::fdopen(descriptor, "rb"));
    if (stream == nullptr) {
        ::close(descriptor);
    }
    return stream;
}

/// The size of the stream's file, or -1.
long streamSize(std::FILE* stream) {
    return std::fseek(stream, 0, SEEK_END) == 0 ? std::ftell(stream) : -1;
}

}  // namespace

ProjectLoading ProjectFile::loadReporting(const char* filePath) {
    if (!isEmpty()) {
        clear();
    }
    ProjectLoading loading;
    const Stream stream = openForReading(filePath);
    if (stream == nullptr) {
        loading.fault = ProjectFault::open;
        loading.error = errno;
        return loading;
    }
    loading.fault = loadStream(stream.get(), loading);
    if (!isEmpty()) {
        path = filePath;
    } else if (std::ferror(stream.get()) != 0) {
        loading.error = errno;
    }
    return loading;
}

ProjectFault ProjectFile::loadStream(std::FILE* stream, ProjectLoading& loading) {
    ProjectFileHeader header;
    const std::size_t headerBytes = std::fread(&header, 1, sizeof header, stream);
    if (headerBytes != sizeof header) {
        if (std::ferror(stream) != 0) {
            return ProjectFault::unreadable;
        }
        loading.fileSize = headerBytes;
        return ProjectFault::header;
    }
    if (header.magic != magic) {
        return ProjectFault::magic;
    }
    loading.entryCount = header.entryCount;
    if (header.entryCount == 0) {
        return ProjectFault::none;
    }
    std::vector<std::uint8_t> bytes;
    std::array<std::uint8_t, 16> digest{};
    const ProjectFault bodyFault = digestBody(stream, bytes, digest);
    if (bodyFault != ProjectFault::none) {
        return bodyFault;
    }
    loading.fileSize = bytes.size();
    if (digest != header.bodyDigest) {
        return ProjectFault::digest;
    }
    std::memcpy(bytes.data(), &header, sizeof header);
    const ProjectFault directoryFault = readDirectory(std::move(bytes), loading);
    if (directoryFault != ProjectFault::none) {
        clear();
    }
    return directoryFault;
}

ProjectFault ProjectFile::digestBody(std::FILE* stream, std::vector<std::uint8_t>& bytes,
                                     std::array<std::uint8_t, 16>& digest) {
    const long size = streamSize(stream);
    if (size < 0 || std::fseek(stream, headerSize, SEEK_SET) != 0) {
        return ProjectFault::unreadable;
    }
    if (size <= headerSize) {
        return ProjectFault::noBody;
    }
    bytes.resize(static_cast<std::size_t>(size));
    const std::size_t bodySize = bytes.size() - headerSize;
    std::uint8_t* body = bytes.data() + headerSize;
    if (std::fread(body, bodySize, 1, stream) != 1) {
        return ProjectFault::unreadable;
    }
    coreEntry::md5Digest(body, bodySize, digest.data());
    return ProjectFault::none;
}

ProjectFault ProjectFile::readDirectory(std::vector<std::uint8_t>&& bytes,
                                        ProjectLoading& loading) {
    // Of a directory that is longer than the file, nothing is read.
    const std::size_t room = (bytes.size() - headerSize) / sizeof(ProjectEntry);
    if (loading.entryCount > room) {
        loading.refusedEntry = static_cast<std::uint32_t>(room);
        return ProjectFault::directory;
    }
    std::vector<ProjectEntry> directory(loading.entryCount);
    const auto stored =
        std::span(bytes).subspan(headerSize, directory.size() * sizeof(ProjectEntry));
    std::memcpy(directory.data(), stored.data(), stored.size());
    const auto refused = std::find_if(
        directory.begin(), directory.end(), [size = bytes.size()](const ProjectEntry& entry) {
            return entry.size == 0 || std::uint64_t{entry.offset} + entry.size > size;
        });
    if (refused != directory.end()) {
        loading.refusedEntry = static_cast<std::uint32_t>(refused - directory.begin());
        loading.entry = *refused;
        return refused->size == 0 ? ProjectFault::emptyValue : ProjectFault::valueRange;
    }
    bytes_ = std::move(bytes);
    directory_ = std::move(directory);
    return ProjectFault::none;
}

bool ProjectFile::create(const char* filePath) {
    if (!isEmpty()) {
        clear();
    }
    const Stream stream(std::fopen(filePath, "w+b"));
    if (stream == nullptr) {
        return false;
    }
    ProjectFileHeader header;
    header.magic = magic;
    // A write that only fills the stream's buffer says nothing of a full device.
    if (std::fwrite(&header, sizeof header, 1, stream.get()) != 1 ||
        std::fflush(stream.get()) != 0) {
        clear();
        return false;
    }
    path = filePath;
    return true;
}

bool ProjectFile::sealHeader(std::FILE* stream) const {
    ProjectFileHeader header;
    std::vector<std::uint8_t> bytes;
    if (digestBody(stream, bytes, header.bodyDigest) != ProjectFault::none) {
        return false;
    }
    header.magic = magic;
    header.entryCount = static_cast<std::uint32_t>(attributes().size());
    return std::fseek(stream, 0, SEEK_SET) == 0 &&
           std::fwrite(&header, sizeof header, 1, stream) == 1;
}
