#include "tools/files/input_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "engine/mapped_file.h"
#include "tools/counted_text.h"
#include "tools/files/write_all.h"

namespace {

std::string descriptorPath(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// A regular file of which nothing has been read, and which can be opened once more.
bool isUnreadFile(int descriptor) {
    struct stat status {};
    ::fstat(descriptor, &status);
    return S_ISREG(status.st_mode) && (::fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_WRONLY &&
           ::lseek(descriptor, 0, SEEK_CUR) == 0 &&
           ::faccessat(AT_FDCWD, descriptorPath(descriptor).c_str(), R_OK, AT_EACCESS) == 0;
}

/// A new file without a name; -1 if there can be none.
int openNameless(const std::string& folder) {
    const int descriptor =
        ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor != -1) {
        return descriptor;
    }
    std::string name = folder + "/projectctl.XXXXXX";
    const int named = ::mkostemp(name.data(), O_CLOEXEC);
    if (named != -1) {
        ::unlink(name.c_str());
    }
    return named;
}

/// Copies standard input to its end; says what went wrong.
std::optional<std::string> copyStandardInput(int descriptor, const std::string& folder) {
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count == 0) {
            return std::nullopt;
        }
        if (count < 0) {
            return std::string("standard input: ") + std::strerror(errno);
        }
        if (!writeAll(descriptor, {buffer.data(), static_cast<std::size_t>(count)})) {
            return folder + ": no copy of standard input: " + std::strerror(errno);
        }
    }
}

/// The size of the file; 0 when it is not known.
std::uint64_t fileSize(const std::string& path) {
    struct stat status {};
    ::stat(path.c_str(), &status);
    return static_cast<std::uint64_t>(status.st_size);
}

}  // namespace

InputFile::~InputFile() {
    if (descriptor != -1) {
        ::close(descriptor);
    }
}

std::string inputName(const std::string& path) {
    return path == "-" ? "standard input" : path;
}

std::optional<std::string> openInputFile(const std::string& path, InputFile& file) {
    if (path != "-") {
        file.path = path;
        return std::nullopt;
    }
    if (isUnreadFile(STDIN_FILENO)) {
        file.path = descriptorPath(STDIN_FILENO);
        return std::nullopt;
    }
    const char* chosen = std::getenv("TMPDIR");
    const std::string folder = chosen != nullptr && *chosen != '\0' ? chosen : "/var/tmp";
    file.descriptor = openNameless(folder);
    if (file.descriptor == -1) {
        return folder + ": no copy of standard input: " + std::strerror(errno);
    }
    file.path = descriptorPath(file.descriptor);
    return copyStandardInput(file.descriptor, folder);
}

std::optional<Refusal> inputFileRefusal(const std::string& path) {
    MappedFile file;
    if (!file.open(path.c_str())) {
        return Refusal{"file.open", std::string("cannot be opened: ") + std::strerror(errno)};
    }
    MappedInput mapped;
    if (!mapInputFile(mapped, path.c_str()).empty()) {
        return std::nullopt;
    }
    struct stat status {};
    ::fstat(file.descriptor, &status);
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? Refusal{"file.directory", "is a directory"}
                                       : Refusal{"file.no-regular", "is no regular file"};
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (size == 0) {
        return Refusal{"file.empty", "is empty"};
    }
    if (file.size() == 0) {
        return Refusal{"file.no-bytes", "has " + counted(size, "byte") +
                                            ", a multiple of 4294967296: nothing of it counts"};
    }
    if (static_cast<std::int32_t>(file.size()) < 0) {
        return Refusal{"file.too-large",
                       "has " + counted(size, "byte") + ": at most 2147483647 can be signed"};
    }
    return Refusal{"file.mapping", "cannot be mapped into memory"};
}

std::optional<std::string> inputFileRemark(const std::string& path) {
    const std::uint64_t size = fileSize(path);
    const auto used = static_cast<std::uint32_t>(size);
    if (used == size) {
        return std::nullopt;
    }
    return "only the first " + counted(used, "byte") + " of " + std::to_string(size) + " count";
}
