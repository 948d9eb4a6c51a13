#include <unistd.h>

#include <bit>
#include <memory>

#include "core/entry.h"
#include "project/open_to_read.h"
#include "project/project_file.h"

namespace {

using Stream = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

constexpr std::array<char, 4> magic = {'V', 'L', 'T', '2'};
constexpr long headerSize = 24;

struct DirectoryEntry {
    std::uint32_t attributeId = 0;
    std::uint32_t dataOffset = 0;
    std::uint32_t dataSize = 0;
};

// The records are read and written as they stand in memory.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(ProjectFileHeader) == headerSize && sizeof(DirectoryEntry) == 12);

/// Opens for binary reading.
Stream openForReading(const char* path) {
    const int descriptor = openToRead(path);
    if (descriptor == -1) {
        return {nullptr, &std::fclose};
    }
    Stream stream(::fdopen(descriptor, "rb"), &std::fclose);
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

bool ProjectFile::load(const char* filePath) {
    if (!attributes.empty()) {
        clear();
    }
    const Stream stream = openForReading(filePath);
    if (stream == nullptr || !loadStream(stream.get())) {
        return false;
    }
    if (!attributes.empty()) {
        path = filePath;
    }
    return true;
}

bool ProjectFile::loadStream(std::FILE* stream) {
    ProjectFileHeader header;
    if (std::fread(&header, sizeof header, 1, stream) != 1 || header.magic != magic) {
        return false;
    }
    if (header.entryCount == 0) {
        return true;
    }
    std::array<std::uint8_t, 16> digest{};
    if (!digestBody(stream, digest) || digest != header.bodyDigest) {
        return false;
    }
    if (!readDirectory(stream, header)) {
        clear();
        return false;
    }
    return true;
}

bool ProjectFile::digestBody(std::FILE* stream, std::array<std::uint8_t, 16>& digest) {
    const long size = streamSize(stream);
    if (size < 0 || std::fseek(stream, headerSize, SEEK_SET) != 0 || size <= headerSize) {
        return false;
    }
    const auto bodySize = static_cast<std::size_t>(size - headerSize);
    std::vector<std::uint8_t> body(bodySize);
    if (std::fread(body.data(), bodySize, 1, stream) != 1) {
        return false;
    }
    coreEntry::md5Digest(body.data(), bodySize, digest.data());
    return true;
}

bool ProjectFile::readDirectory(std::FILE* stream, const ProjectFileHeader& header) {
    attributes.clear();
    const long size = streamSize(stream);
    if (size < headerSize || std::fseek(stream, headerSize, SEEK_SET) != 0) {
        return false;
    }
    // Of a directory that is longer than the file, nothing is read.
    const std::uint32_t count = header.entryCount;
    if (count > static_cast<std::uint64_t>(size - headerSize) / sizeof(DirectoryEntry)) {
        return false;
    }
    std::vector<DirectoryEntry> directory(count);
    if (std::fread(directory.data(), sizeof(DirectoryEntry), count, stream) != count) {
        return false;
    }
    // Values mostly follow each other, and where one begins at the position there is no seeking.
    long position = headerSize + long{count} * long{sizeof(DirectoryEntry)};
    for (const DirectoryEntry& entry : directory) {
        const long end = long{entry.dataOffset} + long{entry.dataSize};
        // Asked before the read, so that a damaged size takes no room.
        if (entry.dataSize == 0 || end > size) {
            return false;
        }
        std::vector<std::uint8_t> value(entry.dataSize);
        if ((entry.dataOffset != position &&
             std::fseek(stream, long{entry.dataOffset}, SEEK_SET) != 0) ||
            std::fread(value.data(), value.size(), 1, stream) != 1) {
            return false;
        }
        position = end;
        insertAttribute(entry.attributeId, std::move(value));
    }
    return true;
}

bool ProjectFile::create(const char* filePath) {
    if (!attributes.empty()) {
        clear();
    }
    const Stream stream(std::fopen(filePath, "w+b"), &std::fclose);
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
    attributes.clear();
    path = filePath;
    return true;
}

bool ProjectFile::sealHeader(std::FILE* stream) const {
    ProjectFileHeader header;
    if (!digestBody(stream, header.bodyDigest)) {
        return false;
    }
    header.magic = magic;
    header.entryCount = static_cast<std::uint32_t>(attributes.size());
    return std::fseek(stream, 0, SEEK_SET) == 0 &&
           std::fwrite(&header, sizeof header, 1, stream) == 1;
}
