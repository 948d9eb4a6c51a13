#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "project/project_file.h"
#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/random_operands.h"
#include "tests/support/temporary_folder.h"

namespace {

const AttributeValues someValues = {{1, {10}}, {2, {20, 21}}, {3, {30, 31, 32}}};

/// A file that `load` refuses, and whether the refusal comes from the directory.
struct DamagedFile {
    const char* name;
    std::function<Bytes()> bytes;
    bool inDirectory = false;
};

/// The image of `someValues` with one thing changed; the digest fits unless it is what changed.
std::function<Bytes()> changed(const std::function<void(ProjectImage&)>& change) {
    return [change] {
        ProjectImage image = projectImage(someValues);
        change(image);
        return image.bytes();
    };
}

const std::vector<DamagedFile>& damagedFiles() {
    static const std::vector<DamagedFile> files = {
        {"Empty", [] { return Bytes(); }},
        {"ShortHeader", [] { return Bytes{'V', 'L', 'T', '2', 0, 0, 0, 0}; }},
        {"OtherMagic", changed([](ProjectImage& image) { image.magic = "VLT1"; })},
        {"OtherMagicWithoutEntries",
         [] {
             ProjectImage image;
             image.magic = "vlt2";
             return image.bytes();
         }},
        {"EmptyBody",
         [] {
             ProjectImage image;
             image.entryCount = 1;
             return image.bytes();
         }},
        {"OtherDigest", changed([](ProjectImage& image) { image.bodyDigest = Bytes(16); })},
        {"ShortDirectory",
         [] {
             ProjectImage image = projectImage({{1, {10}}});
             image.entryCount = 2;
             return image.bytes();
         },
         true},
        {"CountOfTheLargestNumber",
         changed([](ProjectImage& image) { image.entryCount = 0xFFFFFFFF; }), true},
        {"EmptyValueFirst", changed([](ProjectImage& image) { image.directory[0].size = 0; }),
         true},
        {"EmptyValueInTheMiddle", changed([](ProjectImage& image) { image.directory[1].size = 0; }),
         true},
        {"EmptyValueLast", changed([](ProjectImage& image) { image.directory[2].size = 0; }), true},
        {"ValueOneByteTooLong", changed([](ProjectImage& image) { ++image.directory[2].size; }),
         true},
        {"OffsetAtTheEnd", changed([](ProjectImage& image) { image.directory[1].offset = 66; }),
         true},
        {"OffsetBeyondTheEnd",
         changed([](ProjectImage& image) { image.directory[1].offset = 0xFFFFFFFF; }), true},
        {"SizeOfTheLargestNumber",
         changed([](ProjectImage& image) { image.directory[1].size = 0xFFFFFFFF; }), true},
        {"OffsetAndSizeOfTheLargestNumber", changed([](ProjectImage& image) {
             image.directory[1] = {2, 0xFFFFFFFF, 0xFFFFFFFF};
         }),
         true},
        {"EndThatFitsModulo32Bits", changed([](ProjectImage& image) {
             image.directory[1] = {2, 0xFFFFFFF0, 0x20};
         }),
         true},
    };
    return files;
}

class ProjectDamage : public testing::TestWithParam<DamagedFile> {
protected:
    std::string damaged() const { return folder.write("damaged", GetParam().bytes()); }

    TemporaryFolder folder;
    ProjectFile file;
};

TEST_P(ProjectDamage, IsRefusedByAnEmptyStore) {
    EXPECT_FALSE(file.load(damaged().c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, "");
}

TEST_P(ProjectDamage, EmptiesAStoreThatHeldAttributes) {
    ASSERT_TRUE(file.load(folder.write("good", projectBytes(someValues)).c_str()));
    EXPECT_FALSE(file.load(damaged().c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, "");
}

TEST_P(ProjectDamage, EmptiesThePathOfAnEmptyStoreOnlyFromTheDirectoryOn) {
    const std::string created = folder.file("created");
    ASSERT_TRUE(file.create(created.c_str()));
    EXPECT_FALSE(file.load(damaged().c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, GetParam().inDirectory ? "" : created);
}

TEST_P(ProjectDamage, TakesNoRoomForWhatTheFileCannotHold) {
    const std::string path = damaged();
    ScopedFailingCalls calls;
    EXPECT_FALSE(file.load(path.c_str()));
    EXPECT_LE(calls.largestRequest, 4096U);
}

INSTANTIATE_TEST_SUITE_P(Files, ProjectDamage, testing::ValuesIn(damagedFiles()),
                         [](const auto& info) { return std::string(info.param.name); });

class ProjectOpening : public testing::Test {
protected:
    TemporaryFolder folder;
    ProjectFile file;
};

TEST_F(ProjectOpening, EmptiesTableAndPathWhenItFails) {
    ASSERT_TRUE(file.load(folder.write("good", projectBytes(someValues)).c_str()));
    EXPECT_FALSE(file.load(folder.file("missing").c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, "");
}

TEST_F(ProjectOpening, KeepsThePathOfAnEmptyStoreWhenItFails) {
    const std::string created = folder.file("created");
    ASSERT_TRUE(file.create(created.c_str()));
    EXPECT_FALSE(file.load(folder.file("missing").c_str()));
    EXPECT_EQ(file.path, created);
}

class ProjectBytes : public testing::Test {
protected:
    bool loads(const Bytes& bytes) { return file.load(folder.write("project", bytes).c_str()); }

    TemporaryFolder folder;
    ProjectFile file;
};

TEST_F(ProjectBytes, AreRefusedBelowAHeader) {
    Bytes header = ProjectImage().bytes();
    ASSERT_TRUE(loads(header));
    while (!header.empty()) {
        header.pop_back();
        EXPECT_FALSE(loads(header)) << header.size() << " bytes";
    }
}

TEST_F(ProjectBytes, AreRefusedWithAnyByteOfMagicDigestOrBodyChanged) {
    const Bytes good = projectBytes(someValues);
    ASSERT_TRUE(loads(good));
    for (std::size_t i = 0; i < good.size(); ++i) {
        if (i >= 4 && i < 8) {
            continue;  // the entry count
        }
        Bytes changedBytes = good;
        changedBytes[i] ^= static_cast<std::uint8_t>(1U << randomBelow(8));
        EXPECT_FALSE(loads(changedBytes)) << "byte " << i;
    }
}

TEST_F(ProjectBytes, AreRefusedWhenCutShortOrLengthened) {
    Bytes bytes = projectBytes(someValues);
    bytes.push_back(0);
    EXPECT_FALSE(loads(bytes));
    bytes.pop_back();
    ASSERT_TRUE(loads(bytes));
    while (bytes.size() > 24) {
        bytes.pop_back();
        EXPECT_FALSE(loads(bytes)) << bytes.size() << " bytes";
    }
}

}  // namespace
