#include <gtest/gtest.h>

#include "project/project_file.h"
#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/temporary_folder.h"

namespace {

const AttributeValues oneValue = {{1, {10}}};

/// The magic and twenty zero bytes.
Bytes emptyProject() {
    Bytes bytes(24);
    bytes[0] = 'V';
    bytes[1] = 'L';
    bytes[2] = 'T';
    bytes[3] = '2';
    return bytes;
}

class ProjectCreate : public testing::Test {
protected:
    /// Fills the store from a file, which leaves its path too.
    void loadSomething() {
        ASSERT_TRUE(file.load(folder.write("loaded", projectBytes(oneValue)).c_str()));
    }

    TemporaryFolder folder;
    ProjectFile file;
    const std::string path = folder.file("created");
};

TEST_F(ProjectCreate, WritesTheHeaderOfAnEmptyProject) {
    ASSERT_TRUE(file.create(path.c_str()));
    EXPECT_EQ(fileBytes(path), emptyProject());
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, path);
}

TEST_F(ProjectCreate, MakesAFileThatLoadsWithoutAPath) {
    ASSERT_TRUE(file.create(path.c_str()));
    ProjectFile other;
    EXPECT_TRUE(other.load(path.c_str()));
    EXPECT_TRUE(other.isEmpty());
    EXPECT_EQ(other.path, "");
}

TEST_F(ProjectCreate, TruncatesAFileThatExists) {
    folder.write("created", Bytes(1000, 1));
    ASSERT_TRUE(file.create(path.c_str()));
    EXPECT_EQ(fileBytes(path), emptyProject());
}

TEST_F(ProjectCreate, EmptiesTheStore) {
    loadSomething();
    ASSERT_TRUE(file.create(path.c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, path);
}

TEST_F(ProjectCreate, EmptiesAPopulatedStoreWhenOpeningFails) {
    loadSomething();
    EXPECT_FALSE(file.create(folder.file("missing/created").c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, "");
}

TEST_F(ProjectCreate, KeepsThePathOfAnEmptyStoreWhenOpeningFails) {
    ASSERT_TRUE(file.create(path.c_str()));
    EXPECT_FALSE(file.create(folder.path().c_str()));
    EXPECT_EQ(file.path, path);
}

TEST_F(ProjectCreate, EmptiesTableAndPathWhenTheHeaderCannotBeWritten) {
    ASSERT_TRUE(file.create(path.c_str()));
    folder.write("second", Bytes(1000, 1));
    {
        ScopedFailingCalls calls;
        calls.failingStreamCall = 2;
        EXPECT_FALSE(file.create(folder.file("second").c_str()));
    }
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, "");
    EXPECT_TRUE(fileBytes(folder.file("second")).empty());
    EXPECT_FALSE(file.load(folder.file("second").c_str()));
}

TEST_F(ProjectCreate, EmptiesTableAndPathOnAFullDevice) {
    ASSERT_TRUE(file.create(path.c_str()));
    EXPECT_FALSE(file.create("/dev/full"));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, "");
}

}  // namespace
