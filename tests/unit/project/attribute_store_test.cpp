#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "project/project_file.h"
#include "tests/support/random_operands.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t guard = 0xA5;

TEST(GetAttribute, CopiesAValueAsLongAsTheCapacity) {
    ProjectFile file;
    file.insertAttribute(7, {1, 2, 3});
    Bytes buffer(4, guard);
    EXPECT_TRUE(file.getAttribute(7, buffer.data(), 3));
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, guard}));
}

TEST(GetAttribute, RefusesAValueOneByteTooLongAndCopiesNothing) {
    ProjectFile file;
    file.insertAttribute(7, {1, 2, 3});
    Bytes buffer(4, guard);
    EXPECT_FALSE(file.getAttribute(7, buffer.data(), 2));
    EXPECT_EQ(buffer, Bytes(4, guard));
}

TEST(GetAttribute, LeavesTheTailBehindAShorterValue) {
    ProjectFile file;
    file.insertAttribute(7, {1, 2, 3});
    Bytes buffer(10, guard);
    EXPECT_TRUE(file.getAttribute(7, buffer.data(), 10));
    EXPECT_EQ(buffer, (Bytes{1, 2, 3, guard, guard, guard, guard, guard, guard, guard}));
}

TEST(GetAttribute, RefusesAnAbsentId) {
    ProjectFile file;
    file.insertAttribute(7, {1, 2, 3});
    Bytes buffer(4, guard);
    EXPECT_FALSE(file.getAttribute(8, buffer.data(), 4));
    EXPECT_EQ(buffer, Bytes(4, guard));
}

TEST(GetAttribute, AcceptsAnEmptyValueAndNoBuffer) {
    ProjectFile file;
    file.insertAttribute(7, {});
    EXPECT_TRUE(file.getAttribute(7, nullptr, 0));
}

TEST(GetAttribute, CopiesZeroBytesLikeOthers) {
    ProjectFile file;
    file.insertAttribute(7, {0, 1, 0});
    Bytes buffer(3, guard);
    EXPECT_TRUE(file.getAttribute(7, buffer.data(), 3));
    EXPECT_EQ(buffer, (Bytes{0, 1, 0}));
}

TEST(AttributeSize, CountsBytesAndIsZeroForAnAbsentId) {
    ProjectFile file;
    file.insertAttribute(1, Bytes(70000));
    EXPECT_EQ(file.attributeSize(1), 70000U);
    EXPECT_EQ(file.attributeSize(2), 0U);
}

TEST(GetBytes, GivesACopyAndNothingForAnAbsentId) {
    ProjectFile file;
    file.insertAttribute(1, {4, 5, 0});
    Bytes copy = file.getBytes(1);
    EXPECT_EQ(copy, (Bytes{4, 5, 0}));
    copy[0] = 9;
    EXPECT_EQ(file.getBytes(1), (Bytes{4, 5, 0}));
    EXPECT_TRUE(file.getBytes(2).empty());
}

TEST(GetString, LeavesOffOneZeroByteAtTheEnd) {
    ProjectFile file;
    file.insertAttribute(1, {'a', 'b', 'c'});
    file.insertAttribute(2, {'a', 'b', 'c', 0});
    file.insertAttribute(3, {'a', 'b', 'c', 0, 0});
    file.insertAttribute(4, {'a', 0, 'c'});
    file.insertAttribute(5, {0});
    file.insertAttribute(6, {});
    EXPECT_EQ(file.getString(1), "abc");
    EXPECT_EQ(file.getString(2), "abc");
    EXPECT_EQ(file.getString(3), std::string("abc\0", 4));
    EXPECT_EQ(file.getString(4), std::string("a\0c", 3));
    EXPECT_EQ(file.getString(5), "");
    EXPECT_EQ(file.getString(6), "");
    EXPECT_EQ(file.getString(7), "");
}

TEST(InsertAttribute, KeepsTheFirstValueOfAnId) {
    ProjectFile file;
    EXPECT_TRUE(file.insertAttribute(1, {1}));
    EXPECT_FALSE(file.insertAttribute(1, {2, 3}));
    EXPECT_EQ(file.getBytes(1), Bytes{1});
    EXPECT_EQ(file.attributes.size(), 1U);
}

TEST(InsertAttribute, TakesTheBytesOverWithoutCopyingThem) {
    ProjectFile file;
    Bytes value(100, 1);
    const std::uint8_t* storage = value.data();
    file.insertAttribute(1, std::move(value));
    EXPECT_EQ(file.attributes.at(1).data(), storage);
}

TEST(EraseAttribute, RemovesAnIdOnce) {
    ProjectFile file;
    file.insertAttribute(1, {1});
    file.insertAttribute(2, {2});
    EXPECT_TRUE(file.eraseAttribute(1));
    EXPECT_FALSE(file.eraseAttribute(1));
    EXPECT_EQ(file.attributeSize(1), 0U);
    EXPECT_EQ(file.getBytes(2), Bytes{2});
    EXPECT_TRUE(file.insertAttribute(1, {3}));
    EXPECT_EQ(file.getBytes(1), Bytes{3});
}

TEST(AttributeIds, ListsEveryIdInTheTablesOrder) {
    ProjectFile file;
    EXPECT_TRUE(file.attributeIds().empty());
    for (const ProjectAttributeId id : {72U, 0U, 0xFFFFFFFFU, 5U, 76U}) {
        file.insertAttribute(id, {1});
    }
    std::vector<ProjectAttributeId> inOrder;
    for (const auto& [id, value] : file.attributes) {
        inOrder.push_back(id);
    }
    std::vector<ProjectAttributeId> ids = file.attributeIds();
    EXPECT_EQ(ids, inOrder);
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ(ids, (std::vector<ProjectAttributeId>{0, 5, 72, 76, 0xFFFFFFFF}));
}

TEST(Clear, RemovesAttributesAndPath) {
    ProjectFile file;
    file.path = "somewhere";
    file.insertAttribute(1, {1});
    const std::size_t buckets = file.attributes.bucket_count();
    file.clear();
    EXPECT_TRUE(file.attributes.empty());
    EXPECT_EQ(file.path, "");
    EXPECT_EQ(file.attributes.bucket_count(), buckets);
}

TEST(ProjectFile, CopyHasValuesOfItsOwn) {
    ProjectFile file;
    file.path = "somewhere";
    file.insertAttribute(1, {1});
    ProjectFile copy = file;
    EXPECT_EQ(copy.path, "somewhere");
    copy.attributes.at(1)[0] = 9;
    copy.insertAttribute(2, {2});
    EXPECT_EQ(file.getBytes(1), Bytes{1});
    EXPECT_EQ(file.attributeSize(2), 0U);
}

TEST(ProjectFile, FindsIdsThatShareABucket) {
    ProjectFile file;
    file.insertAttribute(3, {1});
    file.insertAttribute(4, {2});
    file.insertAttribute(5, {3});
    const auto buckets = static_cast<ProjectAttributeId>(file.attributes.bucket_count());
    const ProjectAttributeId sharing = 4 + buckets;
    const ProjectAttributeId absent = 4 + 2 * buckets;
    ASSERT_TRUE(file.insertAttribute(sharing, {4}));
    ASSERT_EQ(file.attributes.bucket_count(), buckets);
    ASSERT_EQ(file.attributes.bucket(sharing), file.attributes.bucket(4));

    EXPECT_EQ(file.getBytes(4), Bytes{2});
    EXPECT_EQ(file.getBytes(sharing), Bytes{4});
    EXPECT_FALSE(file.getAttribute(absent, nullptr, 0));
    EXPECT_TRUE(file.eraseAttribute(4));
    EXPECT_EQ(file.getBytes(sharing), Bytes{4});
    EXPECT_EQ(file.getBytes(3), Bytes{1});
    EXPECT_EQ(file.getBytes(5), Bytes{3});
}

TEST(ProjectFile, AgreesWithAnOrderedTableOverRandomCalls) {
    ProjectFile file;
    std::map<ProjectAttributeId, Bytes> expected;
    for (int call = 0; call < 5000; ++call) {
        const auto id = static_cast<ProjectAttributeId>(randomBelow(40) * 0x10000001);
        const Bytes value = randomBytes(randomBelow(20));
        if (randomBelow(3) == 0) {
            ASSERT_EQ(file.eraseAttribute(id), expected.erase(id) == 1);
        } else {
            ASSERT_EQ(file.insertAttribute(id, value), expected.emplace(id, value).second);
        }
        const auto found = expected.find(id);
        ASSERT_EQ(file.getBytes(id), found == expected.end() ? Bytes() : found->second);
        ASSERT_EQ(file.attributeIds().size(), expected.size());
    }
}

}  // namespace
