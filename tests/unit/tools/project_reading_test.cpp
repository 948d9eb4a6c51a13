#include "tools/project/project_reading.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/attribute_values.h"
#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/random_operands.h"
#include "tests/support/standard_streams.h"
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
    EXPECT_EQ(fifo.refusal, "is no regular file");
    EXPECT_TRUE(fifo.unreadable);
}

TEST_F(ReadProject, TellsOfAFileThatCanBeReadAtTheSecondAttemptAlone) {
    const std::string path = folder.write("project", projectBytes(attributes));
    ScopedFailingCalls calls;
    calls.failingStreamCall = 1;
    const ProjectReading reading = readProject(path);
    EXPECT_EQ(reading.refusal, (Refusal{"project.unreadable", "cannot be read"}));
    EXPECT_TRUE(reading.unreadable);
}

TEST_F(ReadProject, TellsOfAFileThatCannotBeRead) {
    const std::string path = folder.write("project", {1, 2, 3});
    ScopedFileCalls calls;
    calls.errors[FileCall::read] = EIO;
    const ProjectReading reading = readProject(path);
    EXPECT_EQ(reading.refusal, (Refusal{"project.unreadable", "cannot be read"}));
    EXPECT_TRUE(reading.unreadable);
}

TEST_F(ReadProject, TellsOfADevice) {
    const ProjectReading device = readProject("/dev/urandom");
    EXPECT_EQ(device.refusal, "is no regular file");
    EXPECT_TRUE(device.unreadable);
}

TEST_F(ReadProject, TellsOfAShortHeader) {
    EXPECT_EQ(readingOf({}).refusal, "has 0 bytes, fewer than the 24 of a header");
    EXPECT_EQ(readingOf(Bytes(1)).refusal, "has 1 byte, fewer than the 24 of a header");
    EXPECT_EQ(readingOf(Bytes(23)).refusal, "has 23 bytes, fewer than the 24 of a header");
}

TEST_F(ReadProject, TellsOfAnotherMagic) {
    EXPECT_EQ(refusalOf([](ProjectImage& image) { image.magic = "VLT1"; }),
              "is no project file: it does not begin with VLT2");
}

TEST_F(ReadProject, TellsOfAnEmptyBody) {
    Bytes bytes = projectBytes(attributes);
    bytes.resize(24);
    EXPECT_EQ(readingOf(bytes).refusal,
              "has a header that counts 3 entries, and nothing behind it");
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

/// Whether a reason is given exactly when the program refuses, and not the one that is left when
/// nothing is found.
bool agreesWithLoad(const Bytes& bytes) {
    const int descriptor = anonymousFile(std::string(bytes.begin(), bytes.end()));
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    ProjectFile project;
    const bool loaded = project.load(path.c_str());
    const ProjectReading reading = readProject(path);
    ::close(descriptor);
    return reading.refusal.has_value() != loaded && reading.refusal != "cannot be read" &&
           valuesOf(reading.project) == valuesOf(project);
}

TEST_F(ReadProject, AgreesWithLoadingOnEveryTruncationAndBit) {
    const Bytes bytes = projectBytes(keyAttributes(randomProjectKey()));
    int differ = 0;
    for (std::ptrdiff_t size = 0; size < std::ssize(bytes); ++size) {
        differ += agreesWithLoad({bytes.begin(), std::next(bytes.begin(), size)}) ? 0 : 1;
    }
    for (std::size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
        Bytes changed = bytes;
        changed[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        differ += agreesWithLoad(changed) ? 0 : 1;
    }
    EXPECT_EQ(differ, 0);
}

TEST_F(ReadProject, AgreesWithLoadingOnRandomDirectoriesUnderATrueDigest) {
    int differ = 0;
    int loaded = 0;
    for (int round = 0; round < 2000; ++round) {
        ProjectImage image = projectImage(attributes);
        for (ImageEntry& entry : image.directory) {
            if (randomBelow(4) == 0) {
                entry.offset = static_cast<std::uint32_t>(randomBelow(100));
            }
            if (randomBelow(4) == 0) {
                entry.size = static_cast<std::uint32_t>(randomBelow(60));
            }
        }
        if (randomBelow(4) == 0) {
            image.entryCount = static_cast<std::uint32_t>(randomBelow(8));
        }
        const Bytes bytes = image.bytes();
        differ += agreesWithLoad(bytes) ? 0 : 1;
        loaded += round % 10 == 0 && !readingOf(bytes).refusal.has_value() ? 1 : 0;
    }
    EXPECT_EQ(differ, 0);
    EXPECT_GT(loaded, 20);
    EXPECT_LT(loaded, 180);
}

}  // namespace
