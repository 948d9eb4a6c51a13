#include "tools/files/whole_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/failing_calls.h"
#include "tests/support/limits.h"
#include "tests/support/open_files.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/file_calls.h"

namespace {

using Names = std::vector<std::string>;
const Bytes content = {'w', 'h', 'o', 'l', 'e'};

bool writeContent(std::FILE* stream) {
    return std::fwrite(content.data(), content.size(), 1, stream) == 1;
}

constexpr std::array<int, 4> terminations = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

/// The wait status of a child that does this and exits with 0, and that such a signal ends.
int statusOfChild(const std::function<void()>& action) {
    const pid_t child = ::fork();
    if (child == 0) {
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        for (const int signal : terminations) {
            std::signal(signal, SIG_DFL);
        }
        action();
        ::_exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

/// Where it can be had a file without a name; elsewhere with one, as the error of this call tells.
struct Ground {
    const char* name;
    std::optional<FileCall> call = std::nullopt;
    int error = 0;
};

class WholeFile : public testing::TestWithParam<Ground> {
protected:
    WholeFile() {
        // A file that an earlier test made holds them back for good.
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, &maskBefore_);
        if (isNamed()) {
            calls.errors[*GetParam().call] = GetParam().error;
        }
    }
    ~WholeFile() override { sigprocmask(SIG_SETMASK, &maskBefore_, nullptr); }

    std::optional<std::string> write(FileAudience audience = FileAudience::owner) const {
        return writeWholeFile(path, audience, writeContent);
    }

    /// The call that gives the file its name.
    static FileCall publishing() { return isNamed() ? FileCall::rename : FileCall::linkUnnamed; }

    static bool isNamed() { return GetParam().call.has_value(); }

    TemporaryFolder folder;
    const std::string path = folder.file("new");
    ScopedFileCalls calls;

private:
    sigset_t maskBefore_{};
};

TEST_P(WholeFile, HasItsContentAndNothingBesideIt) {
    EXPECT_EQ(write(), std::nullopt);
    EXPECT_EQ(fileBytes(path), content);
    EXPECT_EQ(folder.names(), Names{"new"});
}

TEST_P(WholeFile, IsReadableByItsAudience) {
    const mode_t before = ::umask(0027);
    EXPECT_EQ(write(FileAudience::everybody), std::nullopt);
    EXPECT_EQ(writeWholeFile(folder.file("secret"), FileAudience::owner, writeContent),
              std::nullopt);
    ::umask(before);
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    ASSERT_EQ(::stat(folder.file("secret").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_P(WholeFile, GoesToTheWorkingFolderWithoutAFolderInItsPath) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    EXPECT_EQ(writeWholeFile("new", FileAudience::owner, writeContent), std::nullopt);
    std::filesystem::current_path(before);
    EXPECT_EQ(fileBytes(path), content);
}

TEST_P(WholeFile, ReplacesNothing) {
    folder.write("new", {1});
    EXPECT_EQ(write(), path + ": already exists; no file is overwritten, so choose another name");
    EXPECT_EQ(fileBytes(path), Bytes{1});
    EXPECT_EQ(folder.names(), Names{"new"});
}

TEST_P(WholeFile, LeavesNothingWhenTheContentFails) {
    EXPECT_NE(writeWholeFile(path, FileAudience::owner,
                             [](std::FILE* stream) {
                                 writeContent(stream);
                                 errno = EIO;
                                 return false;
                             }),
              std::nullopt);
    EXPECT_EQ(folder.names(), Names{});
}

TEST_P(WholeFile, LeavesNothingOnAFullDisk) {
    calls.errors[FileCall::flush] = ENOSPC;
    EXPECT_EQ(write(), path + ": No space left on device");
    EXPECT_EQ(folder.names(), Names{});
}

TEST_P(WholeFile, LeavesNothingWhenTheLastBytesDoNotFit) {
    const ScopedLimit limit(RLIMIT_FSIZE, content.size() - 1);
    EXPECT_EQ(write(), path + ": File too large");
    EXPECT_EQ(folder.names(), Names{});
}

TEST_P(WholeFile, LeavesNothingWithoutAStream) {
    const auto before = openFiles();
    {
        ScopedFailingCalls streams;
        streams.failingStreamCall = 1;
        write();
    }
    EXPECT_EQ(folder.names(), Names{});
    EXPECT_EQ(openFiles(), before);
}

TEST_P(WholeFile, NeedsNoFolderThatCanBeFlushed) {
    calls.errors[FileCall::openFolder] = EACCES;
    EXPECT_EQ(write(), std::nullopt);
    EXPECT_EQ(fileBytes(path), content);
}

TEST_P(WholeFile, LeavesNothingWhenItCannotBeNamed) {
    calls.errors[publishing()] = EIO;
    EXPECT_EQ(write(), path + ": Input/output error");
    EXPECT_EQ(folder.names(), Names{});
}

TEST_P(WholeFile, IsNotWrittenInAFolderWithoutPermission) {
    std::filesystem::permissions(folder.path(), std::filesystem::perms{0555});
    {
        const ScopedOrdinaryUser user;
        EXPECT_EQ(write(), path + ": Permission denied");
    }
    EXPECT_EQ(folder.names(), Names{});
}

TEST_P(WholeFile, IsCompleteOnceItHasItsName) {
    const int status = statusOfChild([this] {
        calls.signalsAfter[publishing()] = SIGKILL;
        write();
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(fileBytes(path), content);
    EXPECT_EQ(folder.names(), Names{"new"});
}

TEST_P(WholeFile, IsOnTheDiskBeforeItHasItsNameAndItsFolderAfterwards) {
    EXPECT_EQ(write(), std::nullopt);
    std::vector<FileCall> expected = {FileCall::flush, publishing(), FileCall::flushFolder};
    if (!isNamed()) {
        expected.insert(expected.begin(), FileCall::openUnnamed);
    }
    EXPECT_EQ(calls.made, expected);
    EXPECT_EQ(calls.flushedFolder, folder.path());
}

TEST_P(WholeFile, IsNotThereAfterATerminationThatArrivesOnTheWay) {
    for (const int signal : terminations) {
        const int status = statusOfChild([this, signal] {
            writeWholeFile(path, FileAudience::owner, [signal](std::FILE* stream) {
                std::raise(signal);
                return writeContent(stream);
            });
        });
        ASSERT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), signal);
        EXPECT_EQ(folder.names(), Names{});
    }
}

TEST_P(WholeFile, IsDoneWhateverArrivesOnceItHasItsName) {
    for (const int signal : terminations) {
        for (const FileCall call : {publishing(), FileCall::flushFolder}) {
            const int status = statusOfChild([this, signal, call] {
                calls.signalsAfter[call] = signal;
                write();
                std::raise(signal);
            });
            EXPECT_TRUE(WIFEXITED(status)) << WTERMSIG(status);
            EXPECT_EQ(fileBytes(path), content);
            std::filesystem::remove(path);
        }
    }
}

TEST_P(WholeFile, IsMadeWhenWhatArrivesIsIgnored) {
    for (const int signal : terminations) {
        const int status = statusOfChild([this, signal] {
            std::signal(signal, SIG_IGN);
            writeWholeFile(path, FileAudience::owner, [signal](std::FILE* stream) {
                std::raise(signal);
                return writeContent(stream);
            });
        });
        EXPECT_TRUE(WIFEXITED(status)) << WTERMSIG(status);
        EXPECT_EQ(fileBytes(path), content);
        std::filesystem::remove(path);
    }
}

TEST_P(WholeFile, IsMadeThoughAnotherSignalIsHeldBack) {
    const int status = statusOfChild([this] {
        sigset_t held;
        sigemptyset(&held);
        sigaddset(&held, SIGUSR1);
        sigprocmask(SIG_BLOCK, &held, nullptr);
        std::raise(SIGUSR1);
        write();
    });
    EXPECT_TRUE(WIFEXITED(status)) << WTERMSIG(status);
    EXPECT_EQ(fileBytes(path), content);
}

TEST_P(WholeFile, IsNotMadeWhenWhatArrivesIsHandled) {
    const auto before = std::signal(SIGTERM, [](int) {});
    EXPECT_EQ(writeWholeFile(path, FileAudience::owner,
                             [](std::FILE* stream) {
                                 std::raise(SIGTERM);
                                 return writeContent(stream);
                             }),
              path + ": Interrupted system call");
    std::signal(SIGTERM, before);
    EXPECT_EQ(folder.names(), Names{});
}

TEST_P(WholeFile, LeavesTerminationsAsTheyWereWhenItFails) {
    folder.write("new", {1});
    const int status = statusOfChild([this] {
        write();
        std::raise(SIGTERM);
    });
    EXPECT_TRUE(WIFSIGNALED(status));
}

INSTANTIATE_TEST_SUITE_P(
    On, WholeFile,
    testing::Values(Ground{.name = "AnyFileSystem"},
                    Ground{"OneWithNames", FileCall::openUnnamed, EOPNOTSUPP},
                    Ground{"AnOldKernel", FileCall::openUnnamed, EISDIR},
                    Ground{"AnOlderFileSystem", FileCall::openUnnamed, EINVAL},
                    Ground{"AMachineWithoutProc", FileCall::lookUpProc, ENOENT}),
    [](const testing::TestParamInfo<Ground>& ground) { return std::string(ground.param.name); });

using KilledWholeFile = testing::TestWithParam<FileCall>;

TEST_P(KilledWholeFile, LeavesNothing) {
    const TemporaryFolder folder;
    const int status = statusOfChild([&] {
        ScopedFileCalls calls;
        calls.signalsBefore[GetParam()] = SIGKILL;
        writeWholeFile(folder.file("new"), FileAudience::owner, writeContent);
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_EQ(folder.names(), Names{});
}

INSTANTIATE_TEST_SUITE_P(Before, KilledWholeFile,
                         testing::Values(FileCall::openUnnamed, FileCall::flush,
                                         FileCall::linkUnnamed));

TEST(NamedWholeFile, IsLinkedWhereRenamingCannotSpareTheTarget) {
    const TemporaryFolder folder;
    ScopedFileCalls calls;
    calls.errors = {{FileCall::openUnnamed, EOPNOTSUPP}, {FileCall::rename, EINVAL}};
    const std::string path = folder.file("new");
    EXPECT_EQ(writeWholeFile(path, FileAudience::owner, writeContent), std::nullopt);
    EXPECT_EQ(fileBytes(path), content);
    EXPECT_EQ(writeWholeFile(path, FileAudience::owner, writeContent),
              path + ": already exists; no file is overwritten, so choose another name");
    EXPECT_EQ(folder.names(), Names{"new"});
}

TEST(NamedWholeFile, LeavesAFileThatItCannotOpen) {
    const TemporaryFolder folder;
    ScopedFileCalls calls;
    calls.errors[FileCall::openUnnamed] = EOPNOTSUPP;
    const std::string stale = "new." + std::to_string(::getpid()) + ".0";
    folder.write(stale, {1});
    const std::string path = folder.file("new");
    {
        const ScopedLimit limit(RLIMIT_NOFILE, 0);
        EXPECT_EQ(writeWholeFile(path, FileAudience::owner, writeContent),
                  path + ": Too many open files");
    }
    EXPECT_EQ(folder.names(), Names{stale});
}

TEST(UnnamedWholeFile, GetsNoNameForAnotherError) {
    const TemporaryFolder folder;
    ScopedFileCalls calls;
    calls.errors[FileCall::openUnnamed] = ENOSPC;
    const std::string path = folder.file("new");
    EXPECT_EQ(writeWholeFile(path, FileAudience::owner, writeContent),
              path + ": No space left on device");
    EXPECT_EQ(folder.names(), Names{});
}

TEST(NamedWholeFile, TakesANameThatIsFree) {
    const TemporaryFolder folder;
    ScopedFileCalls calls;
    calls.errors[FileCall::openUnnamed] = EOPNOTSUPP;
    const std::string stale = "new." + std::to_string(::getpid()) + ".0";
    folder.write(stale, {1});
    Names names;
    EXPECT_EQ(writeWholeFile(folder.file("new"), FileAudience::owner,
                             [&](std::FILE* stream) {
                                 names = folder.names();
                                 return writeContent(stream);
                             }),
              std::nullopt);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (Names{stale, "new." + std::to_string(::getpid()) + ".1"}));
    EXPECT_EQ(fileBytes(folder.file("new")), content);
    EXPECT_EQ(fileBytes(folder.file(stale)), Bytes{1});
    EXPECT_EQ(folder.names().size(), 2U);
}

}  // namespace
