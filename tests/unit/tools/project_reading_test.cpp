#include "tools/project/project_reading.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <string>

#include "tests/support/attribute_values.h"
#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/file_calls.h"
#include "tests/unit/tools/refusal_text.h"

namespace {

class ReadProject : public testing::Test {
protected:
    ProjectReading readingOf(const Bytes& bytes) const {
        return readProject(folder.write("project", bytes));
    }

    /// Why the image is refused once `change` has made it wrong.
    std::optional<Refusal> refusalOf(const std::function<void(ProjectImage&)>& change) const {
        ProjectImage image = projectImage(attributes);
        change(image);
        const ProjectReading reading = readingOf(image.bytes());
        EXPECT_TRUE(reading.project.isEmpty());
        EXPECT_FALSE(reading.unreadable);
        return reading.refusal;
    }

    const TemporaryFolder folder;
    const AttributeValues attributes = {{3, {1, 2, 3}}, {7, Bytes(20)}, {9, {5}}};
};

TEST_F(ReadProject, TellsThatThereIsNoMemory) {
    const std::string path = folder.write("project", projectBytes({{1, Bytes(100000)}}));
    ScopedFailingCalls calls;
    calls.blockLimit = 50000;
    const ProjectReading reading = readProject(path);
    EXPECT_EQ(reading.refusal, "there is not enough memory to load it");
    EXPECT_TRUE(reading.unreadable);
    EXPECT_TRUE(reading.project.isEmpty());
}

TEST_F(ReadProject, LoadsTheAttributesAndTellsWhereTheyStand) {
    const ProjectReading reading = readingOf(projectBytes(attributes));
    EXPECT_EQ(reading.refusal, std::nullopt);
    EXPECT_EQ(valuesOf(reading.project), attributes);
    ASSERT_EQ(reading.project.directory().size(), 3U);
    EXPECT_EQ(reading.project.directory()[1].id, 7U);
    EXPECT_EQ(reading.project.directory()[1].offset, 24U + 3 * 12 + 3);
    EXPECT_EQ(reading.project.directory()[1].size, 20U);
}

TEST_F(ReadProject, LoadsAnEmptyProjectWhateverFollowsItsHeader) {
    const ProjectReading reading = readingOf(
        {'V', 'L', 'T', '2', 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 9, 9});
    EXPECT_EQ(reading.refusal, std::nullopt);
    EXPECT_TRUE(reading.project.directory().empty());
}

TEST_F(ReadProject, ListsBothEntriesOfOneId) {
    ProjectImage image = projectImage(attributes);
    image.directory[2].id = 3;
    const ProjectReading reading = readingOf(image.bytes());
    EXPECT_EQ(reading.refusal, std::nullopt);
    EXPECT_EQ(reading.project.directory().size(), 3U);
    EXPECT_EQ(reading.project.attributes().size(), 2U);
}

TEST_F(ReadProject, TellsWhatCouldNotBeRead) {
    const ProjectReading missing = readProject(folder.file("missing"));
    EXPECT_EQ(missing.refusal, "cannot be opened: No such file or directory");
    EXPECT_TRUE(missing.unreadable);
    const ProjectReading directory = readProject(folder.path());
    EXPECT_EQ(directory.refusal, "is a directory");
    EXPECT_TRUE(directory.unreadable);
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const ProjectReading fifo = readProject(pipe);
    EXPECT_EQ(fifo.refusal, "not a regular file");
    EXPECT_TRUE(fifo.unreadable);
}

TEST_F(ReadProject, TellsOfAFileThatCannotBeRead) {
    // Of a process, no memory is at address 0.
    const ProjectReading memory = readProject("/proc/self/mem");
    EXPECT_EQ(memory.refusal,
              (Refusal{"project.unreadable", "cannot be read: Input/output error"}));
    EXPECT_TRUE(memory.unreadable);
    const std::string path = folder.write("project", projectBytes(attributes));
    constexpr unsigned readingOfBody = 6;
    ScopedFailingCalls calls;
    calls.failingStreamCall = readingOfBody;
    const ProjectReading cut = readProject(path);
    EXPECT_EQ(cut.refusal, (Refusal{"project.unreadable", "cannot be read"}));
    EXPECT_TRUE(cut.unreadable);
}

TEST_F(ReadProject, OpensOnceWhateverItFinds) {
    for (const std::string& path :
         {folder.write("project", projectBytes(attributes)), folder.write("short", {1, 2, 3}),
          folder.file("missing"), folder.path(), std::string("/dev/null")}) {
        const ScopedFileCalls calls;
        readProject(path);
        EXPECT_EQ(calls.opened, 1U) << path;
    }
}

TEST_F(ReadProject, TellsOfADevice) {
    const ProjectReading device = readProject("/dev/urandom");
    EXPECT_EQ(device.refusal, "not a regular file");
    EXPECT_TRUE(device.unreadable);
}

TEST_F(ReadProject, TellsOfAShortHeader) {
    EXPECT_EQ(readingOf({}).refusal, "not a project file (0 bytes; a header needs 24)");
    EXPECT_EQ(readingOf(Bytes(1)).refusal, "not a project file (1 byte; a header needs 24)");
    EXPECT_EQ(readingOf(Bytes(23)).refusal, "not a project file (23 bytes; a header needs 24)");
}

TEST_F(ReadProject, TellsOfAnotherMagic) {
    EXPECT_EQ(refusalOf([](ProjectImage& image) { image.magic = "VLT1"; }),
              "not a project file (it does not begin with VLT2)");
}

TEST_F(ReadProject, TellsOfAnEmptyBody) {
    Bytes bytes = projectBytes(attributes);
    bytes.resize(24);
    EXPECT_EQ(readingOf(bytes).refusal, "has a header that counts 3 entries, and nothing after it");
}

TEST_F(ReadProject, TellsOfADigestThatDiffers) {
    EXPECT_EQ(refusalOf([](ProjectImage& image) { image.bodyDigest = Bytes(16); }),
              "is damaged: the digest in its header is not that of its body");
}

TEST_F(ReadProject, TellsWhereTheDirectoryEnds) {
    EXPECT_EQ(refusalOf([](ProjectImage& image) {
                  image.values.clear();
                  for (ImageEntry& entry : image.directory) {
                      entry = {.id = entry.id, .offset = 0, .size = 24};
                  }
                  image.entryCount = 5;
              }),
              "the directory ends after 3 of 5 entries");
    // This comes before what the entries say.
    EXPECT_EQ(refusalOf([](ProjectImage& image) {
                  image.values.clear();
                  image.directory[1].size = 0;
                  image.entryCount = 5;
              }),
              "the directory ends after 3 of 5 entries");
}

TEST_F(ReadProject, TellsOfAnEmptyValue) {
    EXPECT_EQ(refusalOf([](ProjectImage& image) { image.directory[1].size = 0; }),
              "entry 2 (attribute 7) has a size of 0");
}

TEST_F(ReadProject, TellsOfAValueThatRunsPastTheEnd) {
    EXPECT_EQ(refusalOf([](ProjectImage& image) { image.directory[2].size = 2; }),
              "entry 3 (attribute 9) runs past the end of the file: 2 bytes at offset 83, and the "
              "file has 84");
    EXPECT_EQ(refusalOf([](ProjectImage& image) {
                  image.directory[0] = {.id = 3, .offset = 0xFFFFFFFF, .size = 0xFFFFFFFF};
              }),
              "entry 1 (attribute 3) runs past the end of the file: 4294967295 bytes at offset "
              "4294967295, and the file has 84");
}

TEST_F(ReadProject, TellsOfTheFirstWrongEntry) {
    EXPECT_EQ(refusalOf([](ProjectImage& image) {
                  image.directory[2].size = 0;
                  image.directory[1].size = 1000;
              }),
              "entry 2 (attribute 7) runs past the end of the file: 1000 bytes at offset 63, and "
              "the file has 84");
}

}  // namespace
