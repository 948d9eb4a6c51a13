#include "tests/support/standard_streams.h"

#include <stdio_ext.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace {

/// Puts `descriptor` in the place of `standard` and returns what stood there.
int exchange(int standard, int descriptor) {
    const int saved = ::dup(standard);
    if (saved == -1 || ::dup2(descriptor, standard) == -1) {
        throw std::runtime_error("cannot redirect a standard stream");
    }
    ::close(descriptor);
    return saved;
}

/// Forgets what the stream knows of another file.
void forgetInput() {
    ::__fpurge(stdin);
    std::clearerr(stdin);
}

}  // namespace

ScopedInput::ScopedInput(std::string_view bytes)
    : saved(exchange(STDIN_FILENO, anonymousFile(bytes))), size(bytes.size()) {
    forgetInput();
}

ScopedInput::~ScopedInput() {
    ::dup2(saved, STDIN_FILENO);
    ::close(saved);
    forgetInput();
}

std::size_t ScopedInput::left() const {
    return size - static_cast<std::size_t>(::lseek(STDIN_FILENO, 0, SEEK_CUR));
}

ScopedClosedDescriptor::ScopedClosedDescriptor(int standard)
    : closed(standard), saved(::dup(standard)) {
    if (saved == -1) {
        throw std::runtime_error("cannot keep a standard stream");
    }
    (void)std::fflush(stdout);
    ::close(standard);
}

ScopedClosedDescriptor::~ScopedClosedDescriptor() {
    ::dup2(saved, closed);
    ::close(saved);
}

std::string capturedOutput(const std::function<void()>& action) {
    const int file = anonymousFile("");
    (void)std::fflush(stdout);
    const int saved = exchange(STDOUT_FILENO, ::dup(file));
    action();
    (void)std::fflush(stdout);
    ::dup2(saved, STDOUT_FILENO);
    ::close(saved);
    std::string content = fileContent(file);
    ::close(file);
    return content;
}

int anonymousFile(std::string_view bytes) {
    const int descriptor = ::memfd_create("bytes", MFD_CLOEXEC);
    if (descriptor == -1 ||
        ::pwrite(descriptor, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::runtime_error("cannot make an anonymous file");
    }
    return descriptor;
}

std::string fileContent(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        throw std::runtime_error("cannot look at a file");
    }
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    if (::pread(descriptor, content.data(), content.size(), 0) != status.st_size) {
        throw std::runtime_error("cannot read a file");
    }
    return content;
}
