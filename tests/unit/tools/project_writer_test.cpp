#include "tools/project/project_writer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "engine/signature_engine.h"
#include "tests/support/attribute_values.h"
#include "tests/support/failing_calls.h"
#include "tests/support/limits.h"
#include "tests/support/open_files.h"
#include "tests/support/project_builder.h"
#include "tests/support/random_operands.h"
#include "tests/support/temporary_folder.h"
#include "tools/project/new_project.h"

namespace {

class WriteProjectFile : public testing::Test {
protected:
    static void expectMessage(const std::optional<std::string>& message,
                              const std::string& reason) {
        ASSERT_TRUE(message.has_value());
        EXPECT_NE(message->find(reason), std::string::npos) << *message;
    }

    TemporaryFolder folder;
    const std::string path = folder.file("project");
    const ProjectFile project = newProject(BasePoint::random, std::nullopt);
};

TEST_F(WriteProjectFile, WritesAFileThatLoadsWithTheSameAttributes) {
    EXPECT_EQ(writeProjectFile(project, path), std::nullopt);
    ProjectFile loaded;
    ASSERT_TRUE(loaded.load(path.c_str()));
    EXPECT_EQ(valuesOf(loaded), valuesOf(project));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"project"});
}

TEST_F(WriteProjectFile, WritesTheBytesOfAProjectInAscendingOrderOfIds) {
    EXPECT_EQ(writeProjectFile(project, path), std::nullopt);
    EXPECT_EQ(fileBytes(path), projectBytes(valuesOf(project)));
}

TEST_F(WriteProjectFile, WritesAttributesOfAnySize) {
    ProjectFile other;
    other.insertAttribute(0xFFFFFFFF, {1});
    other.insertAttribute(0, randomBytes(100000));
    other.insertAttribute(72, {2, 3});
    EXPECT_EQ(writeProjectFile(other, path), std::nullopt);
    ProjectFile loaded;
    ASSERT_TRUE(loaded.load(path.c_str()));
    EXPECT_EQ(valuesOf(loaded), valuesOf(other));
}

TEST_F(WriteProjectFile, WritesAProjectThatSignsAndVerifies) {
    for (int round = 0; round < 20; ++round) {
        const std::string fresh = folder.file("fresh" + std::to_string(round));
        ASSERT_EQ(writeProjectFile(newProject(BasePoint::random, std::nullopt), fresh),
                  std::nullopt);
        const Bytes data = randomBytes(50);
        std::array<char, signatureBufferSize> text{};
        EXPECT_TRUE(signData(fresh.c_str(), data.data(), 50, text.data()));
        EXPECT_TRUE(verifyData(fresh.c_str(), data.data(), 50, text.data()));
        EXPECT_FALSE(verifyData(fresh.c_str(), data.data(), 49, text.data()));
    }
}

TEST_F(WriteProjectFile, GivesItsOwnerAloneAccessWhateverTheMask) {
    for (const mode_t mask : {0000U, 0022U, 0077U}) {
        const std::string masked = folder.file("mask" + std::to_string(mask));
        const mode_t before = ::umask(mask);
        EXPECT_EQ(writeProjectFile(project, masked), std::nullopt);
        ::umask(before);
        struct stat status;
        ASSERT_EQ(::stat(masked.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0600U);
    }
}

TEST_F(WriteProjectFile, GivesEverybodyAProjectWithoutAScalar) {
    ProjectFile stripped = project;
    stripped.eraseAttribute(74);
    const mode_t before = ::umask(0022);
    EXPECT_EQ(writeProjectFile(stripped, path), std::nullopt);
    ::umask(before);
    struct stat status;
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0644U);
}

TEST_F(WriteProjectFile, LeavesAFileThatExistsAsItIs) {
    for (const Bytes& content : {Bytes{}, Bytes{1, 2, 3}}) {
        folder.write("project", content);
        expectMessage(writeProjectFile(project, path),
                      path + ": already exists; no file is overwritten, so choose another name");
        EXPECT_EQ(fileBytes(path), content);
        EXPECT_EQ(folder.names(), std::vector<std::string>{"project"});
    }
}

TEST_F(WriteProjectFile, LeavesAFolderOrLinkThatExistsAsItIs) {
    std::filesystem::create_directory(path);
    expectMessage(writeProjectFile(project, path),
                  "already exists; no file is overwritten, so choose another name");
    EXPECT_TRUE(std::filesystem::is_empty(path));
    std::filesystem::remove(path);
    std::filesystem::create_symlink("nowhere", path);
    expectMessage(writeProjectFile(project, path),
                  "already exists; no file is overwritten, so choose another name");
    EXPECT_EQ(std::filesystem::read_symlink(path), "nowhere");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"project"});
}

TEST_F(WriteProjectFile, NamesTheFileAndTheReasonWhenTheFolderIsMissing) {
    const std::string below = folder.file("missing/project");
    expectMessage(writeProjectFile(project, below), below + ": No such file or directory");
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(WriteProjectFile, LeavesNothingWhenTheFileCannotBeWrittenWhole) {
    for (const rlim_t size : {0U, 10U, 200U}) {
        std::optional<std::string> message;
        {
            const ScopedLimit limit(RLIMIT_FSIZE, size);
            message = writeProjectFile(project, path);
        }
        expectMessage(message, path + ": File too large");
        EXPECT_TRUE(folder.names().empty()) << "limit " << size;
    }
    // More than the stream's buffer holds.
    ProjectFile large;
    large.insertAttribute(1, Bytes(100'000));
    const ScopedLimit limit(RLIMIT_FSIZE, 1000);
    expectMessage(writeProjectFile(large, path), path + ": File too large");
}

/// A project whose values share the bytes of a file of 1 MiB. A new file would have `size` bytes.
ProjectFile projectOf(std::uint64_t size, const TemporaryFolder& folder) {
    constexpr std::uint32_t valueSize = 1 << 20;
    constexpr std::uint32_t entries = 4096;
    constexpr std::uint32_t offset = 24 + 12 * entries;
    ProjectImage image;
    for (std::uint32_t id = 1; id <= entries; ++id) {
        image.directory.push_back({.id = id, .offset = offset, .size = valueSize});
    }
    image.directory.back().size =
        static_cast<std::uint32_t>(size - offset - std::uint64_t{valueSize} * (entries - 1));
    image.values.resize(valueSize);
    ProjectFile project;
    EXPECT_TRUE(project.load(folder.write("shared", image.bytes()).c_str()));
    return project;
}

TEST_F(WriteProjectFile, RefusesWhatOffsetsOf32BitsDoNotReach) {
    const ProjectFile large = projectOf(1ULL << 32, folder);
    const std::string refusal =
        path + ": would have 4294967296 bytes, and a project file has at most 4294967295";
    EXPECT_EQ(sizeRefusal(large, path), refusal);
    ScopedFailingCalls calls;
    EXPECT_EQ(writeProjectFile(large, path), refusal);
    EXPECT_LT(calls.largestRequest, 1U << 20);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"shared"});
}

TEST_F(WriteProjectFile, WritesAsMuchAsOffsetsOf32BitsReach) {
    const ProjectFile largest = projectOf((1ULL << 32) - 1, folder);
    EXPECT_EQ(sizeRefusal(largest, path), std::nullopt);
    // Room for all of it is asked for, and not given.
    ScopedFailingCalls calls;
    calls.blockLimit = 1 << 20;
    EXPECT_THROW(writeProjectFile(largest, path), std::bad_alloc);
    EXPECT_EQ(calls.largestRequest, (1ULL << 32) - 1);
}

TEST_F(WriteProjectFile, LeavesNoFileOpen) {
    const auto before = openFiles();
    writeProjectFile(project, path);
    writeProjectFile(project, path);
    writeProjectFile(project, folder.file("missing/project"));
    EXPECT_EQ(openFiles(), before);
}

}  // namespace
