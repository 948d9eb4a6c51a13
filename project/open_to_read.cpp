#include "project/open_to_read.h"

#include <fcntl.h>

#include <cerrno>

int openToRead(const char* path) {
    const int descriptor = ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor != -1 || errno != EWOULDBLOCK) {
        return descriptor;
    }
    return ::open(path, O_RDONLY | O_CLOEXEC);
}
