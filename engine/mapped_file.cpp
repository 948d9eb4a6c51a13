#include "engine/mapped_file.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "project/open_to_read.h"

namespace {

/// What the system knows of an open file; zeros for a descriptor that is none.
struct stat statusOf(int descriptor) {
    struct stat status {};
    ::fstat(descriptor, &status);
    return status;
}

/// A length widened with its sign. A negative length becomes a size that no mapping has room for.
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

/// What the rule on sizes has against a file of so many bytes.
FileFault sizeFault(std::uint64_t size) {
    const auto length = static_cast<std::int32_t>(size);
    if (length < 0) {
        return FileFault::tooLarge;
    }
    if (length == 0) {
        return size == 0 ? FileFault::empty : FileFault::noBytes;
    }
    return FileFault::none;
}

/// Maps an open file of this size, unless there is a fault.
FileFault mapBytes(MappedInput& input) {
    if (const FileFault fault = sizeFault(input.size); fault != FileFault::none) {
        return fault;
    }
    MappedFile& file = input.file;
    const auto length = static_cast<std::uint32_t>(input.size);
    const std::uint32_t mapped = mapAtItsSize(file);
    if (mapped >= length) {
        input.bytes = {file.address, length};
        return FileFault::none;
    }
    // The mapping has the size of its moment: nothing behind it is taken for the file's.
    if (mapped != 0) {
        endMapping(file.address, mapped);
        file.address = nullptr;
        return FileFault::changed;
    }
    return file.size() < length ? FileFault::changed : FileFault::mapping;
}

}  // namespace

MappedFile::~MappedFile() {
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
    return static_cast<std::uint32_t>(statusOf(descriptor).st_size);
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
    return static_cast<std::uint64_t>(statusOf(file.descriptor).st_size) >= bytes.size();
}

bool MappedInput::endWhole() {
    if (fault == FileFault::none && !isWhole()) {
        fault = FileFault::cut;
    }
    return fault == FileFault::none;
}

std::span<const std::uint8_t> mapInputFile(MappedInput& input, const char* path) {
    if (!input.file.open(path)) {
        input.openError = errno;
        input.fault = FileFault::open;
        return {};
    }
    const struct stat status = statusOf(input.file.descriptor);
    input.size = static_cast<std::uint64_t>(status.st_size);
    input.fault = mapBytes(input);
    if (input.fault != FileFault::none && !S_ISREG(status.st_mode)) {
        input.fault = S_ISDIR(status.st_mode) ? FileFault::directory : FileFault::notRegular;
    }
    return input.bytes;
}
