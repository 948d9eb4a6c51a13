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

#include "tools/counted_text.h"
#include "tools/files/cut_file.h"
#include "tools/files/write_all.h"
#include "tools/report.h"
#include "tools/rules.h"

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

/// The fault of a file to sign, which has one.
std::string wordsOf(const MappedInput& input) {
    const std::string size = "has " + counted(input.size, "byte");
    switch (input.fault) {
        case FileFault::open:
            return std::string("cannot be opened: ") + std::strerror(input.openError);
        case FileFault::directory:
            return "is a directory";
        case FileFault::notRegular:
            return "not a regular file";
        case FileFault::empty:
            return "is empty";
        case FileFault::noBytes:
            return size + ", a multiple of 4294967296: nothing of it counts";
        case FileFault::tooLarge:
            return size + ": at most 2147483647 can be signed";
        case FileFault::mapping:
            return "cannot be mapped into memory";
        case FileFault::changed:
            return "became shorter while it was mapped";
        case FileFault::cut:
        case FileFault::none:
            break;
    }
    return cutFileWords;
}

/// Copies standard input to its end; says what went wrong.
std::optional<std::string> copyStandardInput(int descriptor, const std::string& folder) {
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count == 0) {
            return std::nullopt;
        }
        if (count == -1) {
            return std::string("standard input: ") + std::strerror(errno);
        }
        if (!writeAll(descriptor, {buffer.data(), static_cast<std::size_t>(count)})) {
            return folder + ": no copy of standard input: " + std::strerror(errno);
        }
    }
}

}  // namespace

InputFile::~InputFile() {
    ::close(descriptor);  // of -1, this does nothing
}

std::string inputName(const std::string& path) {
    return path == "-" ? "standard input" : path;
}

bool isFile(const std::string& path) {
    return ::access(path.c_str(), F_OK) == 0;
}

void reportWaiting() {
    if (::isatty(STDIN_FILENO) == 1) {
        reportRemark("waiting for standard input; Ctrl-D at the start of a line ends it");
    }
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
    reportWaiting();
    return copyStandardInput(file.descriptor, folder);
}

std::optional<Refusal> inputFileRefusal(const MappedInput& input) {
    if (input.fault == FileFault::none) {
        return std::nullopt;
    }
    return refusalBy(input.fault, wordsOf(input));
}

std::optional<std::string> inputFileRemark(const MappedInput& input) {
    if (input.fault != FileFault::none || input.bytes.size() == input.size) {
        return std::nullopt;
    }
    return "only the first " + counted(input.bytes.size(), "byte") + " of " +
           std::to_string(input.size) + " count";
}
