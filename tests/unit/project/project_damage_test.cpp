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

const AttributeValues threeValues = {{1, {10}}, {2, {20, 21}}, {3, {30, 31, 32}}};

/// A file that `load` refuses, and what stops it.
struct DamagedFile {
    const char* name;
    std::function<Bytes()> bytes;
    ProjectLoading loading;

    bool isRefusedInDirectory() const { return loading.fault >= ProjectFault::directory; }
};

/// The image of `threeValues` with one thing changed; the digest fits unless it is what changed.
std::function<Bytes()> changed(const std::function<void(ProjectImage&)>& change) {
    return [change] {
        ProjectImage image = projectImage(threeValues);
        change(image);
        return image.bytes();
    };
}

/// The same with one entry changed, which `load` refuses for this fault.
DamagedFile withEntry(const char* name, std::uint32_t number, ImageEntry entry,
                      ProjectFault fault) {
    return {name, changed([=](ProjectImage& image) { image.directory.at(number) = entry; }),
            ProjectLoading{.fault = fault,
                           .fileSize = 66,
                           .entryCount = 3,
                           .refusedEntry = number,
                           .entry = {.id = entry.id, .offset = entry.offset, .size = entry.size}}};
}

const std::vector<DamagedFile>& damagedFiles() {
    using enum ProjectFault;
    static const std::vector<DamagedFile> files = {
        {"Empty", [] { return Bytes(); }, {.fault = header}},
        {"ShortHeader",
         [] { return Bytes{'V', 'L', 'T', '2', 0, 0, 0, 0}; },
         {.fault = header, .fileSize = 8}},
        {"OtherMagic",
         changed([](ProjectImage& image) { image.magic = "VLT1"; }),
         {.fault = magic}},
        {"OtherMagicWithoutEntries",
         [] {
             ProjectImage image;
             image.magic = "vlt2";
             return image.bytes();
         },
         {.fault = magic}},
        {"EmptyBody",
         [] {
             ProjectImage image;
             image.entryCount = 1;
             return image.bytes();
         },
         {.fault = noBody, .entryCount = 1}},
        {"OtherDigest",
         changed([](ProjectImage& image) { image.bodyDigest = Bytes(16); }),
         {.fault = digest, .fileSize = 66, .entryCount = 3}},
        {"OtherDigestThatHidesAShortDirectory",
         changed([](ProjectImage& image) {
             image.bodyDigest = Bytes(16);
             image.entryCount = 9;
         }),
         {.fault = digest, .fileSize = 66, .entryCount = 9}},
        {"ShortDirectory",
         [] {
             ProjectImage image = projectImage({{1, {10}}});
             image.entryCount = 2;
             return image.bytes();
         },
         {.fault = directory, .fileSize = 37, .entryCount = 2, .refusedEntry = 1}},
        {"ShortDirectoryThatHidesAnEmptyValue",
         changed([](ProjectImage& image) {
             image.directory[0].size = 0;
             image.entryCount = 4;
         }),
         {.fault = directory, .fileSize = 66, .entryCount = 4, .refusedEntry = 3}},
        {"CountOfTheLargestNumber",
         changed([](ProjectImage& image) { image.entryCount = 0xFFFFFFFF; }),
         {.fault = directory, .fileSize = 66, .entryCount = 0xFFFFFFFF, .refusedEntry = 3}},
        withEntry("EmptyValueFirst", 0, {1, 60, 0}, emptyValue),
        withEntry("EmptyValueInTheMiddle", 1, {2, 61, 0}, emptyValue),
        withEntry("EmptyValueLast", 2, {3, 63, 0}, emptyValue),
        withEntry("EmptyValueBeyondTheEnd", 2, {3, 0xFFFFFFFF, 0}, emptyValue),
        withEntry("ValueOneByteTooLong", 2, {3, 63, 4}, valueRange),
        withEntry("OffsetAtTheEnd", 1, {2, 66, 2}, valueRange),
        withEntry("OffsetBeyondTheEnd", 1, {2, 0xFFFFFFFF, 2}, valueRange),
        withEntry("SizeOfTheLargestNumber", 1, {2, 61, 0xFFFFFFFF}, valueRange),
        withEntry("OffsetAndSizeOfTheLargestNumber", 1, {2, 0xFFFFFFFF, 0xFFFFFFFF}, valueRange),
        withEntry("EndThatFitsModulo32Bits", 1, {2, 0xFFFFFFF0, 0x20}, valueRange),
        {"TwoWrongEntries",
         changed([](ProjectImage& image) {
             image.directory[2].size = 0;
             image.directory[1].size = 1000;
         }),
         {.fault = valueRange,
          .fileSize = 66,
          .entryCount = 3,
          .refusedEntry = 1,
          .entry = {.id = 2, .offset = 61, .size = 1000}}},
    };
    return files;
}

void expectLoading(const ProjectLoading& loading, const ProjectLoading& expected) {
    EXPECT_EQ(loading.fault, expected.fault);
    EXPECT_EQ(loading.error, expected.error);
    EXPECT_EQ(loading.fileSize, expected.fileSize);
    EXPECT_EQ(loading.entryCount, expected.entryCount);
    EXPECT_EQ(loading.refusedEntry, expected.refusedEntry);
    EXPECT_EQ(loading.entry.id, expected.entry.id);
    EXPECT_EQ(loading.entry.offset, expected.entry.offset);
    EXPECT_EQ(loading.entry.size, expected.entry.size);
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

TEST_P(ProjectDamage, IsToldWithWhatStopsTheLoading) {
    expectLoading(file.loadReporting(damaged().c_str()), GetParam().loading);
}

TEST_P(ProjectDamage, EmptiesAStoreThatHeldAttributes) {
    ASSERT_TRUE(file.load(folder.write("good", projectBytes(threeValues)).c_str()));
    EXPECT_FALSE(file.load(damaged().c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, "");
}

TEST_P(ProjectDamage, EmptiesThePathOfAnEmptyStoreOnlyFromTheDirectoryOn) {
    const std::string created = folder.file("created");
    ASSERT_TRUE(file.create(created.c_str()));
    EXPECT_FALSE(file.load(damaged().c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, GetParam().isRefusedInDirectory() ? "" : created);
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
    ASSERT_TRUE(file.load(folder.write("good", projectBytes(threeValues)).c_str()));
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
    const Bytes good = projectBytes(threeValues);
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
    Bytes bytes = projectBytes(threeValues);
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
