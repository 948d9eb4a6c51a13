#include "tools/files/input_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <thread>

#include "engine/mapped_file.h"
#include "tests/support/limits.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/random_operands.h"
#include "tests/support/standard_streams.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/file_calls.h"
#include "tests/unit/tools/refusal_text.h"
#include "tests/unit/tools/scoped_terminal.h"

namespace {

/// What there is to say of the file at `path`.
std::optional<Refusal> refusalOf(const std::string& path) {
    MappedInput input;
    mapInputFile(input, path.c_str());
    return inputFileRefusal(input);
}

std::optional<std::string> remarkOf(const std::string& path) {
    MappedInput input;
    mapInputFile(input, path.c_str());
    return inputFileRemark(input);
}

/// What the engine would sign.
Bytes mappedBytes(const InputFile& file) {
    MappedInput mapped;
    const std::span<const std::uint8_t> bytes = mapInputFile(mapped, file.path.c_str());
    return {bytes.begin(), bytes.end()};
}

/// While it lives, TMPDIR has this value.
class ScopedTemporaryFolder {
public:
    explicit ScopedTemporaryFolder(const std::string& path) {
        const char* before = std::getenv("TMPDIR");
        before_ = before == nullptr ? "" : before;
        ::setenv("TMPDIR", path.c_str(), 1);
    }
    ~ScopedTemporaryFolder() {
        if (before_.empty()) {
            ::unsetenv("TMPDIR");
        } else {
            ::setenv("TMPDIR", before_.c_str(), 1);
        }
    }
    ScopedTemporaryFolder(const ScopedTemporaryFolder&) = delete;
    ScopedTemporaryFolder& operator=(const ScopedTemporaryFolder&) = delete;

private:
    std::string before_;
};

/// While it lives, standard input is this descriptor, which is closed.
class ScopedDescriptor {
public:
    explicit ScopedDescriptor(int descriptor) : saved_(::dup(STDIN_FILENO)) {
        ::dup2(descriptor, STDIN_FILENO);
        ::close(descriptor);
    }
    ~ScopedDescriptor() {
        ::dup2(saved_, STDIN_FILENO);
        ::close(saved_);
    }
    ScopedDescriptor(const ScopedDescriptor&) = delete;
    ScopedDescriptor& operator=(const ScopedDescriptor&) = delete;

private:
    int saved_;
};

/// While it lives, standard input is the reading end of a pipe that gets these bytes in pieces.
class ScopedPipe {
public:
    explicit ScopedPipe(const Bytes& bytes) : saved_(::dup(STDIN_FILENO)) {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0) {
            throw std::runtime_error("no pipe");
        }
        ::dup2(ends[0], STDIN_FILENO);
        ::close(ends[0]);
        writer_ = std::thread([bytes, end = ends[1]] {
            constexpr std::size_t piece = 7001;
            for (std::size_t at = 0; at < bytes.size(); at += piece) {
                const std::size_t count = std::min(piece, bytes.size() - at);
                if (::write(end, bytes.data() + at, count) != static_cast<ssize_t>(count)) {
                    break;
                }
            }
            ::close(end);
        });
    }
    ~ScopedPipe() {
        writer_.join();
        ::dup2(saved_, STDIN_FILENO);
        ::close(saved_);
    }
    ScopedPipe(const ScopedPipe&) = delete;
    ScopedPipe& operator=(const ScopedPipe&) = delete;

private:
    int saved_;
    std::thread writer_;
};

class OpenInputFile : public testing::Test {
protected:
    TemporaryFolder folder;
    const ScopedTemporaryFolder temporary{folder.path()};
};

TEST_F(OpenInputFile, TakesAPathAsItStands) {
    InputFile file;
    EXPECT_EQ(openInputFile("some/path", file), std::nullopt);
    EXPECT_EQ(file.path, "some/path");
}

TEST_F(OpenInputFile, CopiesAPipeToItsEndIntoAFileWithoutAName) {
    const Bytes bytes = randomBytes(200'000);
    // The second on a file system where each file has a name at first.
    for (const int error : {0, EOPNOTSUPP}) {
        ScopedFileCalls calls;
        if (error != 0) {
            calls.errors[FileCall::openUnnamed] = error;
        }
        const ScopedPipe pipe(bytes);
        std::optional<InputFile> file(std::in_place);
        ASSERT_EQ(openInputFile("-", *file), std::nullopt);
        EXPECT_EQ(mappedBytes(*file), bytes);
        EXPECT_TRUE(folder.names().empty());
        const int copy = file->descriptor;
        const std::filesystem::path name = std::filesystem::read_symlink(file->path).filename();
        EXPECT_EQ(name.string().starts_with("projectctl."), error != 0) << name;
        struct stat status {};
        ::fstat(copy, &status);
        EXPECT_EQ(status.st_mode & ~mode_t{S_IFMT}, S_IRUSR | S_IWUSR) << "no other user reads it";
        file.reset();
        EXPECT_EQ(::fcntl(copy, F_GETFD), -1) << "it is open still";
    }
}

TEST_F(OpenInputFile, TakesAFileOnStandardInputWithoutACopy) {
    const ScopedInput input("content");
    InputFile file;
    ASSERT_EQ(openInputFile("-", file), std::nullopt);
    EXPECT_EQ(file.descriptor, -1);
    EXPECT_EQ(mappedBytes(file), (Bytes{'c', 'o', 'n', 't', 'e', 'n', 't'}));
}

TEST_F(OpenInputFile, CopiesTheRestOfAFileThatHasBeenReadFrom) {
    const ScopedInput input("content");
    std::array<char, 3> taken{};
    ASSERT_EQ(::read(STDIN_FILENO, taken.data(), taken.size()), 3);
    InputFile file;
    ASSERT_EQ(openInputFile("-", file), std::nullopt);
    EXPECT_EQ(mappedBytes(file), (Bytes{'t', 'e', 'n', 't'}));
}

TEST_F(OpenInputFile, NamesTheFolderThatTakesNoCopy) {
    const std::string missing = folder.file("missing");
    const ScopedTemporaryFolder nowhere(missing);
    const ScopedPipe pipe({1});
    InputFile file;
    EXPECT_EQ(openInputFile("-", file),
              missing + ": no copy of standard input: No such file or directory");
}

TEST_F(OpenInputFile, NamesTheFolderThatTheUserMayNotWriteTo) {
    std::filesystem::permissions(folder.path(), std::filesystem::perms{0555});
    const ScopedPipe pipe({1});
    const ScopedOrdinaryUser user;
    InputFile file;
    EXPECT_EQ(openInputFile("-", file),
              folder.path() + ": no copy of standard input: Permission denied");
}

TEST_F(OpenInputFile, SaysThatItWaitsAtATerminal) {
    const ScopedTerminal terminal(STDIN_FILENO);
    terminal.type("a\n\4");
    testing::internal::CaptureStderr();
    InputFile file;
    EXPECT_EQ(openInputFile("-", file), std::nullopt);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "projectctl: waiting for standard input; Ctrl-D at the start of a line ends it\n");
    EXPECT_EQ(mappedBytes(file), (Bytes{'a', '\n'}));
}

TEST_F(OpenInputFile, CopiesToTheUsualFolderWhereNoneIsNamed) {
    const ScopedTemporaryFolder unnamed("");
    const ScopedPipe pipe({1});
    InputFile file;
    ASSERT_EQ(openInputFile("-", file), std::nullopt);
    EXPECT_TRUE(std::filesystem::read_symlink(file.path).string().starts_with("/var/tmp/"));
}

TEST_F(OpenInputFile, NamesTheFolderThatHasNoRoomForTheCopy) {
    const ScopedPipe pipe(Bytes(1000));
    const ScopedLimit limit(RLIMIT_FSIZE, 999);
    InputFile file;
    EXPECT_EQ(openInputFile("-", file),
              folder.path() + ": no copy of standard input: File too large");
}

TEST_F(OpenInputFile, CopiesAFileThatItCannotOpenOnceMore) {
    const std::string path = folder.write("file", {1, 2});
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::filesystem::permissions(path, std::filesystem::perms::none);
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    const ScopedDescriptor input(descriptor);
    const ScopedOrdinaryUser user;
    InputFile file;
    ASSERT_EQ(openInputFile("-", file), std::nullopt);
    EXPECT_NE(file.descriptor, -1);
    EXPECT_EQ(mappedBytes(file), (Bytes{1, 2}));
}

TEST_F(OpenInputFile, ReportsAFileThatIsOpenForWritingAlone) {
    const std::string path = folder.write("file", {1, 2});
    const ScopedDescriptor input(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    InputFile file;
    EXPECT_EQ(openInputFile("-", file), "standard input: Bad file descriptor");
}

TEST_F(OpenInputFile, ReportsAStandardInputThatCannotBeRead) {
    const ScopedDescriptor input(::open(folder.path().c_str(), O_RDONLY | O_CLOEXEC));
    InputFile file;
    EXPECT_EQ(openInputFile("-", file), "standard input: Is a directory");
}

TEST(ReportWaiting, SpeaksToAPersonAtATerminalAlone) {
    const auto reported = [] {
        testing::internal::CaptureStderr();
        reportWaiting();
        return testing::internal::GetCapturedStderr();
    };
    const ScopedInput input("");
    EXPECT_EQ(reported(), "");
    const ScopedTerminal terminal(STDIN_FILENO);
    EXPECT_EQ(reported(),
              "projectctl: waiting for standard input; Ctrl-D at the start of a line ends it\n");
}

class InputFileRefusal : public testing::Test {
protected:
    std::string sparse(std::uint64_t size) const {
        const std::string path = folder.write("sparse", {});
        std::filesystem::resize_file(path, size);
        return path;
    }

    TemporaryFolder folder;
};

TEST_F(InputFileRefusal, IsNothingForAFileThatCanBeSigned) {
    EXPECT_EQ(refusalOf(folder.write("file", {1})), std::nullopt);
    EXPECT_EQ(refusalOf(sparse(2147483647)), std::nullopt);
    EXPECT_EQ(refusalOf(sparse(4294967301)), std::nullopt);
}

TEST_F(InputFileRefusal, TellsWhyAFileCannotBeOpened) {
    EXPECT_EQ(refusalOf(folder.file("missing")), "cannot be opened: No such file or directory");
    EXPECT_EQ(refusalOf(folder.write("file", {1}) + "/x"), "cannot be opened: Not a directory");
}

TEST_F(InputFileRefusal, TellsWhatIsNoFile) {
    EXPECT_EQ(refusalOf(folder.path()), "is a directory");
    EXPECT_EQ(refusalOf("/dev/null"), "not a regular file");
}

TEST_F(InputFileRefusal, TellsTheSizesThatCannotBeSigned) {
    EXPECT_EQ(refusalOf(folder.write("file", {})), "is empty");
    EXPECT_EQ(refusalOf(sparse(2147483648)),
              "has 2147483648 bytes: at most 2147483647 can be signed");
    EXPECT_EQ(refusalOf(sparse(4294967295)),
              "has 4294967295 bytes: at most 2147483647 can be signed");
    EXPECT_EQ(refusalOf(sparse(4294967296)),
              "has 4294967296 bytes, a multiple of 4294967296: nothing of it counts");
}

TEST_F(InputFileRefusal, TellsOfAFileThatTheSystemDoesNotMap) {
    MappedInput input;
    input.fault = FileFault::mapping;
    EXPECT_EQ(inputFileRefusal(input), "cannot be mapped into memory");
}

TEST_F(InputFileRefusal, IsAccompaniedByARemarkOnAFileOfWhichAPartCounts) {
    EXPECT_EQ(remarkOf(folder.write("file", {1})), std::nullopt);
    EXPECT_EQ(remarkOf(folder.file("missing")), std::nullopt);
    EXPECT_EQ(remarkOf(sparse(4294967295)), std::nullopt);
    EXPECT_EQ(remarkOf(sparse(4294967301)), "only the first 5 bytes of 4294967301 count");
    EXPECT_EQ(remarkOf(sparse(4294967297)), "only the first 1 byte of 4294967297 count");
}

}  // namespace
