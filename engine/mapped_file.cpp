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
    if (descriptor == -1 || address != nullptr) {
        return false;
    }
    const std::uint32_t length = size();
    if (length == 0) {
        return false;
    }
    void* mapping = ::mmap(nullptr, mappingLength(length), PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (mapping == MAP_FAILED) {
        return false;
    }
    address = static_cast<const std::uint8_t*>(mapping);
    return true;
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
        ::munmap(const_cast<std::uint8_t*>(bytes.data()), bytes.size());
        file.address = nullptr;
    }
}

bool MappedInput::isWhole() const {
    return file.size() >= bytes.size();
}

std::span<const std::uint8_t> mapInputFile(MappedInput& input, const char* path) {
    MappedFile& file = input.file;
    if (!file.open(path)) {
        return {};
    }
    const auto length = static_cast<std::int32_t>(file.size());
    if (length < 1 || !file.map()) {
        return {};
    }
    input.bytes = {file.address, static_cast<std::size_t>(length)};
    // The mapping has the size of its moment: nothing behind it is taken for the file's.
    if (!input.isWhole()) {
        input.bytes = {};
    }
    return input.bytes;
}
