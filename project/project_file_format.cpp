#include <unistd.h>

#include <bit>
#include <cstring>
#include <memory>

#include "core/entry.h"
#include "project/open_to_read.h"
#include "project/project_file.h"

namespace {

using Stream = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

constexpr std::array<char, 4> magic = {'V', 'L', 'T', '2'};
constexpr long headerSize = 24;

// The records are read and written as they stand in memory.
static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(ProjectFileHeader) == headerSize && sizeof(ProjectEntry) == 12);

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
    if (!isEmpty()) {
        clear();
    }
    const Stream stream = openForReading(filePath);
    if (stream == nullptr || !loadStream(stream.get())) {
        return false;
    }
    if (!isEmpty()) {
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
    std::vector<std::uint8_t> bytes;
    std::array<std::uint8_t, 16> digest{};
    if (!digestBody(stream, bytes, digest) || digest != header.bodyDigest) {
        return false;
    }
    std::memcpy(bytes.data(), &header, sizeof header);
    if (!readDirectory(std::move(bytes), header.entryCount)) {
        clear();
        return false;
    }
    return true;
}

bool ProjectFile::digestBody(std::FILE* stream, std::vector<std::uint8_t>& bytes,
                             std::array<std::uint8_t, 16>& digest) {
    const long size = streamSize(stream);
    if (size < 0 || std::fseek(stream, headerSize, SEEK_SET) != 0 || size <= headerSize) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(size));
    const std::size_t bodySize = bytes.size() - headerSize;
    std::uint8_t* body = bytes.data() + headerSize;
    if (std::fread(body, bodySize, 1, stream) != 1) {
        return false;
    }
    coreEntry::md5Digest(body, bodySize, digest.data());
    return true;
}

bool ProjectFile::readDirectory(std::vector<std::uint8_t> bytes, std::uint32_t entryCount) {
    // Of a directory that is longer than the file, nothing is read.
    if (entryCount > (bytes.size() - headerSize) / sizeof(ProjectEntry)) {
        return false;
    }
    const auto stored =
        std::span(bytes).subspan(headerSize, std::size_t{entryCount} * sizeof(ProjectEntry));
    std::vector<ProjectEntry> directory(entryCount);
    std::memcpy(directory.data(), stored.data(), stored.size());
    for (const ProjectEntry& entry : directory) {
        if (entry.size == 0 || std::uint64_t{entry.offset} + entry.size > bytes.size()) {
            return false;
        }
    }
    bytes_ = std::move(bytes);
    directory_ = std::move(directory);
    return true;
}

bool ProjectFile::create(const char* filePath) {
    if (!isEmpty()) {
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
    path = filePath;
    return true;
}

bool ProjectFile::sealHeader(std::FILE* stream) const {
    ProjectFileHeader header;
    std::vector<std::uint8_t> bytes;
    if (!digestBody(stream, bytes, header.bodyDigest)) {
        return false;
    }
    header.magic = magic;
    header.entryCount = static_cast<std::uint32_t>(attributes().size());
    return std::fseek(stream, 0, SEEK_SET) == 0 &&
           std::fwrite(&header, sizeof header, 1, stream) == 1;
}
