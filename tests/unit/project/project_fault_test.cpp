#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "project/project_file.h"
#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/temporary_folder.h"

namespace {

class ProjectFaults : public testing::Test {
protected:
    ProjectLoading loadingOf(const std::string& path) { return file.loadReporting(path.c_str()); }

    TemporaryFolder folder;
    ProjectFile file;
    const std::string path = folder.write("project", projectBytes({{1, {10}}, {2, {20, 21}}}));
};

TEST_F(ProjectFaults, AreNoneOfASoundFileWhoseSizesAreTold) {
    const ProjectLoading loading = loadingOf(path);
    EXPECT_EQ(loading.fault, ProjectFault::none);
    EXPECT_EQ(loading.error, 0);
    EXPECT_EQ(loading.fileSize, 24U + 2 * 12 + 3);
    EXPECT_EQ(loading.entryCount, 2U);
    EXPECT_EQ(loading.refusedEntry, 0U);
}

TEST_F(ProjectFaults, AreNoneOfAFileWithoutEntries) {
    const ProjectLoading loading = loadingOf(folder.write("empty", ProjectImage().bytes()));
    EXPECT_EQ(loading.fault, ProjectFault::none);
    EXPECT_EQ(loading.entryCount, 0U);
}

TEST_F(ProjectFaults, TellWhyTheFileDoesNotOpen) {
    std::filesystem::create_symlink("loop", folder.file("loop"));
    for (const auto& [bad, error] : {std::pair(folder.file("missing"), ENOENT),
                                     {path + "/below", ENOTDIR},
                                     {folder.file("loop"), ELOOP},
                                     {folder.file(std::string(300, 'x')), ENAMETOOLONG}}) {
        const ProjectLoading loading = loadingOf(bad);
        EXPECT_EQ(loading.fault, ProjectFault::open) << bad;
        EXPECT_EQ(loading.error, error) << bad;
    }
}

TEST_F(ProjectFaults, TellWhyTheFileCannotBeRead) {
    // Of a process, no memory is at address 0.
    for (const auto& [bad, error] :
         {std::pair(folder.path(), EISDIR), {std::string("/proc/self/mem"), EIO}}) {
        const ProjectLoading loading = loadingOf(bad);
        EXPECT_EQ(loading.fault, ProjectFault::unreadable) << bad;
        EXPECT_EQ(loading.error, error) << bad;
        EXPECT_EQ(loading.fileSize, 0U) << bad;
    }
}

TEST_F(ProjectFaults, CountAFifoWithoutBytesAsAShortHeader) {
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(loadingOf(fifo).fault, ProjectFault::header);
}

TEST_F(ProjectFaults, FollowTheCallThatFails) {
    using enum ProjectFault;
    // The stream is opened, its header read, its size looked for in three steps, its body read.
    constexpr std::array faults = {open, header, unreadable, unreadable, unreadable, unreadable};
    for (unsigned call = 0; call < faults.size(); ++call) {
        ScopedFailingCalls calls;
        calls.failingStreamCall = call + 1;
        errno = EDOM;
        const ProjectLoading loading = loadingOf(path);
        EXPECT_EQ(loading.fault, faults.at(call)) << "call " << call + 1;
        EXPECT_EQ(loading.error, faults.at(call) == open ? EDOM : 0) << "call " << call + 1;
        EXPECT_EQ(loading.fileSize, 0U) << "call " << call + 1;
    }
}

}  // namespace
