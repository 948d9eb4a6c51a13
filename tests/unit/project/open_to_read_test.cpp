#include "project/open_to_read.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace {

/// Error of every opening that does not wait, unless 0; and the flags of all openings so far.
int errorWithoutWaiting = 0;
std::vector<int> openings;

}  // namespace

// The linker's names for the library's function and for what replaces it.
int systemOpen(const char* path, int flags, ...) asm("__real_open");
int replacedOpen(const char* path, int flags, ...) asm("__wrap_open");

int replacedOpen(const char* path, int flags, ...) {  // NOLINT(cert-dcl50-cpp)
    openings.push_back(flags);
    if (errorWithoutWaiting != 0 && (flags & O_NONBLOCK) != 0) {
        errno = errorWithoutWaiting;
        return -1;
    }
    return systemOpen(path, flags);
}

namespace {

constexpr int reading = O_RDONLY | O_CLOEXEC;

class OpenToRead : public testing::Test {
protected:
    OpenToRead() { openings.clear(); }
    ~OpenToRead() override { errorWithoutWaiting = 0; }

    TemporaryFolder folder;
    const std::string path = folder.write("file", {'x'});
};

TEST_F(OpenToRead, OpensForReadingAlone) {
    const int descriptor = openToRead(path.c_str());
    ASSERT_NE(descriptor, -1);
    char byte = 0;
    EXPECT_EQ(::read(descriptor, &byte, 1), 1);
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(::fcntl(descriptor, F_GETFL) & O_ACCMODE, O_RDONLY);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    ::close(descriptor);
    EXPECT_EQ(openings, std::vector<int>({reading | O_NONBLOCK}));
}

TEST_F(OpenToRead, WaitsForNoWriterOfAFifo) {
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const int descriptor = openToRead(fifo.c_str());
    EXPECT_NE(descriptor, -1);
    ::close(descriptor);
}

TEST_F(OpenToRead, WaitsForALeaseToBeGivenUp) {
    errorWithoutWaiting = EWOULDBLOCK;
    const int descriptor = openToRead(path.c_str());
    EXPECT_NE(descriptor, -1);
    ::close(descriptor);
    EXPECT_EQ(openings, std::vector<int>({reading | O_NONBLOCK, reading}));
}

TEST_F(OpenToRead, OpensOnceWhatCannotBeOpened) {
    EXPECT_EQ(openToRead(folder.file("missing").c_str()), -1);
    errorWithoutWaiting = EACCES;
    EXPECT_EQ(openToRead(path.c_str()), -1);
    EXPECT_EQ(openings, std::vector<int>(2, reading | O_NONBLOCK));
}

}  // namespace
