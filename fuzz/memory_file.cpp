#include "fuzz/memory_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include "fuzz/property.h"
#include "tests/support/standard_streams.h"

MemoryFile::MemoryFile(int descriptor)
    : descriptor_(descriptor), path_("/dev/fd/" + std::to_string(descriptor)) {
    const int made = anonymousFile("");
    require(::dup2(made, descriptor_) == descriptor_, "a file in memory is made");
    ::close(made);
}

void MemoryFile::write(const std::vector<std::uint8_t>& bytes) const {
    const auto size = static_cast<ssize_t>(bytes.size());
    require(::pwrite(descriptor_, bytes.data(), bytes.size(), 0) == size &&
                ::ftruncate(descriptor_, size) == 0,
            "a file in memory is written");
}

std::vector<std::uint8_t> MemoryFile::content() const {
    const std::string bytes = fileContent(descriptor_);
    return {bytes.begin(), bytes.end()};
}

bool MemoryFile::isAt(const std::string& path) const {
    if (path == path_) {
        return true;
    }
    struct stat own {};
    struct stat other {};
    return ::fstat(descriptor_, &own) == 0 && ::stat(path.c_str(), &other) == 0 &&
           own.st_dev == other.st_dev && own.st_ino == other.st_ino;
}
