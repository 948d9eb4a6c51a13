#include "engine/mapped_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>

#include "project/open_to_read.h"

namespace {

/// A length widened with its sign: of a negative one, no mapping has room for the size.
std::size_t mappingLength(std::uint32_t size) {
    return static_cast<std::size_t>(static_cast<std::int32_t>(size));
}

/// Maps a file as `map` does, and returns the number of bytes mapped; 0 where that fails.
std::uint32_t mapAtItsSize(MappedFile& file) {
    if (file.descriptor == -1 || file.address != nullptr) {
        return 0;
    }
    const std::uint32_t length = file.size();
    if (length == 0) {
        return 0;
    }
    void* mapping =
        ::mmap(nullptr, mappingLength(length), PROT_READ, MAP_PRIVATE, file.descriptor, 0);
    if (mapping == MAP_FAILED) {
        return 0;
    }
    file.address = static_cast<const std::uint8_t*>(mapping);
    return length;
}

void endMapping(const std::uint8_t* address, std::size_t length) {
    ::munmap(const_cast<std::uint8_t*>(address), length);
}

}  // namespace

MappedFile::~MappedFile() {
    if (descriptor == -1) {
        return;
    }
    unmap();
    close();
}

bool MappedFile::open(const char* path) {
    if (descriptor != -1 || address != nullptr) {
        return false;
    }
    descriptor = openToRead(path);
    return descriptor != -1;
}

std::uint32_t MappedFile::size() const {
    struct stat status;
    if (descriptor == -1 || ::fstat(descriptor, &status) != 0) {
        return 0;
    }
    return static_cast<std::uint32_t>(status.st_size);
}

bool MappedFile::map() {
    return mapAtItsSize(*this) != 0;
}

bool MappedFile::unmap() {
    if (descriptor == -1 || address == nullptr) {
        return false;
    }
    const std::uint32_t length = size();
    if (length == 0 || ::munmap(const_cast<std::uint8_t*>(address), mappingLength(length)) != 0) {
        return false;
    }
    address = nullptr;
    return true;
}

bool MappedFile::close() {
    if (descriptor == -1) {
        return false;
    }
    ::close(descriptor);
    descriptor = -1;
    return true;
}

MappedInput::~MappedInput() {
    if (!bytes.empty()) {
        endMapping(bytes.data(), bytes.size());
        file.address = nullptr;
    }
}

bool MappedInput::isWhole() const {
    // All 64 bits of the size, of which `size` knows the low half.
    struct stat status;
    return ::fstat(file.descriptor, &status) == 0 &&
           static_cast<std::uint64_t>(status.st_size) >= bytes.size();
}

std::span<const std::uint8_t> mapInputFile(MappedInput& input, const char* path) {
    MappedFile& file = input.file;
    if (!file.open(path)) {
        return {};
    }
    const auto length = static_cast<std::int32_t>(file.size());
    const std::uint32_t mapped = length < 1 ? 0 : mapAtItsSize(file);
    if (mapped == 0) {
        return {};
    }
    // The mapping has the size of its moment: nothing behind it is taken for the file's.
    if (mapped < static_cast<std::uint32_t>(length)) {
        endMapping(file.address, mapped);
        file.address = nullptr;
        return {};
    }
    input.bytes = {file.address, static_cast<std::size_t>(length)};
    return input.bytes;
}
