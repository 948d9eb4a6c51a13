#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <new>

#include "project/project_file.h"
#include "tests/support/attribute_values.h"
#include "tests/support/failing_calls.h"
#include "tests/support/open_files.h"
#include "tests/support/project_builder.h"
#include "tests/support/signature_vectors.h"
#include "tests/support/standard_streams.h"
#include "tests/support/temporary_folder.h"

namespace {

const AttributeValues farValues = {{1, {10}}, {2, {20, 21}}, {0xFFFFFFFF, {30, 31, 32}}};

class ProjectLoad : public testing::Test {
protected:
    /// The path of a file with these bytes.
    std::string written(const Bytes& bytes) const { return folder.write("project", bytes); }

    TemporaryFolder folder;
    ProjectFile file;
};

TEST_F(ProjectLoad, ReadsTheKnownProjects) {
    ASSERT_EQ(projectVectorPaths().size(), 6U);
    for (const std::string& path : projectVectorPaths()) {
        ASSERT_TRUE(file.load(path.c_str())) << path;
        EXPECT_EQ(valuesOf(file), readProjectBytes(fileBytes(path))) << path;
        EXPECT_EQ(file.attributes().size(), 5U) << path;
        EXPECT_EQ(file.path, path);
    }
}

TEST_F(ProjectLoad, TakesIdsOfAnyValueInAnyOrder) {
    ProjectImage image = projectImage({{0, {1}}, {0x80000000, {2, 3}}, {0xFFFFFFFF, Bytes(999)}});
    std::reverse(image.directory.begin(), image.directory.end());
    ASSERT_TRUE(file.load(written(image.bytes()).c_str()));
    EXPECT_EQ(valuesOf(file),
              (AttributeValues{{0, {1}}, {0x80000000, {2, 3}}, {0xFFFFFFFF, Bytes(999)}}));
}

TEST_F(ProjectLoad, KeepsThePathByteForByte) {
    written(projectBytes(farValues));
    const std::string odd = folder.path() + "/.//./project";
    ASSERT_TRUE(file.load(odd.c_str()));
    EXPECT_EQ(file.path, odd);
}

TEST_F(ProjectLoad, ReplacesTheContentOfBefore) {
    ASSERT_TRUE(file.load(written(projectBytes(farValues)).c_str()));
    const std::string other = folder.write("other", projectBytes({{9, {9}}}));
    ASSERT_TRUE(file.load(other.c_str()));
    EXPECT_EQ(valuesOf(file), (AttributeValues{{9, {9}}}));
    EXPECT_EQ(file.path, other);
}

TEST_F(ProjectLoad, GivesTheSameTwice) {
    const std::string path = written(projectBytes(farValues));
    ASSERT_TRUE(file.load(path.c_str()));
    ASSERT_TRUE(file.load(path.c_str()));
    EXPECT_EQ(valuesOf(file), farValues);
    EXPECT_EQ(file.path, path);
}

TEST_F(ProjectLoad, KeepsTheFirstOfTwoValuesWithOneId) {
    ProjectImage image = projectImage({{1, {10}}, {2, {20}}, {3, {30}}});
    image.directory[2].id = 1;
    ASSERT_TRUE(file.load(written(image.bytes()).c_str()));
    EXPECT_EQ(valuesOf(file), (AttributeValues{{1, {10}}, {2, {20}}}));
    Bytes value(1);
    EXPECT_TRUE(file.getAttribute(1, value.data(), 1));
    EXPECT_EQ(value, Bytes{10});
}

TEST_F(ProjectLoad, SeesNoEntryBehindASmallerCount) {
    ProjectImage image = projectImage(farValues);
    image.entryCount = 2;
    ASSERT_TRUE(file.load(written(image.bytes()).c_str()));
    EXPECT_EQ(valuesOf(file), (AttributeValues{{1, {10}}, {2, {20, 21}}}));
}

TEST_F(ProjectLoad, LetsValuesShareBytesAndLeaveGaps) {
    ProjectImage image;
    image.values = {1, 2, 3, 4, 5, 6, 7, 8};
    image.directory = {{1, 60, 4}, {2, 61, 2}, {3, 66, 2}};
    ASSERT_TRUE(file.load(written(image.bytes()).c_str()));
    EXPECT_EQ(valuesOf(file), (AttributeValues{{1, {1, 2, 3, 4}}, {2, {2, 3}}, {3, {7, 8}}}));
}

TEST_F(ProjectLoad, LetsValuesStandInDirectoryAndHeader) {
    ProjectImage image;
    image.directory = {{0x44434241, 24, 4}, {2, 0, 8}, {3, 30, 12}};
    const Bytes bytes = image.bytes();
    ASSERT_TRUE(file.load(written(bytes).c_str()));
    EXPECT_EQ(valuesOf(file),
              (AttributeValues{{0x44434241, {'A', 'B', 'C', 'D'}},
                               {2, {'V', 'L', 'T', '2', 3, 0, 0, 0}},
                               {3, Bytes(bytes.begin() + 30, bytes.begin() + 42)}}));
}

TEST_F(ProjectLoad, ReadsValuesWhereverTheyStand) {
    for (const std::size_t count : {1U, 2U}) {
        ProjectImage image;
        image.directory.resize(count);
        image.values = {91, 92, 93, 94};
        const auto size = static_cast<std::uint32_t>(image.bytes().size());
        for (std::uint32_t offset = 0; offset + 2 <= size; ++offset) {
            image.directory.front() = {.id = 1, .offset = offset, .size = 2};
            image.directory.back() = {.id = 1, .offset = offset, .size = 2};
            const Bytes bytes = image.bytes();
            ASSERT_TRUE(file.load(written(bytes).c_str()));
            ASSERT_EQ(valuesOf(file), (AttributeValues{{1, {bytes[offset], bytes[offset + 1]}}}))
                << count << " times at " << offset;
        }
    }
}

TEST_F(ProjectLoad, TakesTheWholeFileForAValue) {
    ProjectImage image;
    image.directory = {{1, 0, 37}};
    image.values = {99};
    const Bytes bytes = image.bytes();
    ASSERT_TRUE(file.load(written(bytes).c_str()));
    EXPECT_EQ(file.getBytes(1), bytes);
}

TEST_F(ProjectLoad, LooksAtNothingBehindACountOfZero) {
    for (const std::size_t trailing : {0U, 1U, 12U, 5000U}) {
        ProjectImage image;
        image.values = Bytes(trailing, 0xEE);
        image.bodyDigest = Bytes(16, 0x77);
        ASSERT_TRUE(file.load(written(image.bytes()).c_str())) << trailing << " bytes";
        EXPECT_TRUE(file.isEmpty());
        EXPECT_EQ(file.path, "");
    }
}

TEST_F(ProjectLoad, KeepsThePathOfBeforeWhenTheCountIsZero) {
    file.path = "kept";
    ASSERT_TRUE(file.load(written(ProjectImage().bytes()).c_str()));
    EXPECT_EQ(file.path, "kept");
}

TEST_F(ProjectLoad, EmptiesTableAndPathForACountOfZero) {
    ASSERT_TRUE(file.load(written(projectBytes(farValues)).c_str()));
    ASSERT_TRUE(file.load(written(ProjectImage().bytes()).c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, "");
}

TEST_F(ProjectLoad, LeavesNoFileOpen) {
    const std::string good = written(projectBytes(farValues));
    const std::string bad = folder.write("bad", Bytes(500, 1));
    const auto before = openFiles();
    file.load(good.c_str());
    file.load(bad.c_str());
    EXPECT_EQ(openFiles(), before);
}

TEST_F(ProjectLoad, OpensTheFileUnderWhateverDescriptorIsFree) {
    const std::string path = written(projectBytes(farValues));
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        bool loaded = false;
        {
            const ScopedClosedDescriptor closed(standard);
            loaded = file.load(path.c_str());
        }
        EXPECT_TRUE(loaded) << standard;
        EXPECT_EQ(valuesOf(file), farValues) << standard;
    }
}

TEST_F(ProjectLoad, LeavesTheFileAsItIs) {
    const Bytes bytes = projectBytes(farValues);
    const std::string path = written(bytes);
    ASSERT_TRUE(file.load(path.c_str()));
    EXPECT_EQ(fileBytes(path), bytes);
}

TEST_F(ProjectLoad, PassesMemoryExhaustionOn) {
    const std::string path = written(projectBytes({{1, Bytes(100000)}}));
    ScopedFailingCalls calls;
    calls.blockLimit = 50000;
    EXPECT_THROW(file.load(path.c_str()), std::bad_alloc);
}

TEST_F(ProjectLoad, RefusesAFifoWithoutWaitingForAWriter) {
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(file.load(fifo.c_str()));
}

TEST_F(ProjectLoad, RefusesAStreamThatHasNoPositions) {
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const int writer = ::open(fifo.c_str(), O_RDWR);
    ASSERT_NE(writer, -1);
    const Bytes bytes = projectBytes(farValues);
    EXPECT_EQ(::write(writer, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    EXPECT_FALSE(file.load(fifo.c_str()));
    EXPECT_TRUE(file.isEmpty());
    ::close(writer);
}

TEST_F(ProjectLoad, RefusesPathsThatCannotBeOpened) {
    const std::string path = written(projectBytes(farValues));
    std::filesystem::create_symlink("loop", folder.file("loop"));
    for (const std::string& bad : {folder.file("missing"), path + "/below", folder.file("loop"),
                                   std::string(), folder.file(std::string(300, 'x'))}) {
        EXPECT_FALSE(file.load(bad.c_str())) << bad;
    }
}

TEST_F(ProjectLoad, RefusesAFolder) {
    EXPECT_FALSE(file.load(folder.path().c_str()));
}

}  // namespace
