#include <gtest/gtest.h>

#include <map>
#include <new>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "project/project_file.h"
#include "tests/support/attribute_values.h"
#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/random_operands.h"
#include "tests/support/temporary_folder.h"

namespace {

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
    EXPECT_EQ(file.attributes().size(), 1U);
}

TEST(InsertAttribute, TakesTheBytesOverWithoutCopyingThem) {
    ProjectFile file;
    Bytes value(100, 1);
    const std::uint8_t* storage = value.data();
    file.insertAttribute(1, std::move(value));
    EXPECT_EQ(file.attributes().front().value.data(), storage);
}

TEST(InsertAttribute, LeavesTheTableAsItWasWithoutMemory) {
    ProjectFile file;
    AttributeValues inserted;
    unsigned refusals = 0;
    for (ProjectAttributeId id = 0; id < 20; ++id) {
        Bytes value(100, static_cast<std::uint8_t>(id));
        inserted[id] = value;
        bool isRefused = false;
        {
            ScopedFailingCalls calls;
            calls.blockLimit = 0;
            try {
                file.insertAttribute(id, std::move(value));
            } catch (const std::bad_alloc&) {
                isRefused = true;
            }
        }
        if (isRefused) {
            ++refusals;
            EXPECT_EQ(file.attributeSize(id), 0U);
            EXPECT_TRUE(file.insertAttribute(id, inserted[id]));
        }
        EXPECT_EQ(valuesOf(file), inserted) << "id " << id;
    }
    // Room for one more is not always there.
    EXPECT_GT(refusals, 0U);
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

using Ids = std::vector<ProjectAttributeId>;

/// The ids in the order in which an unordered map of the standard library gives them back.
Ids inOrderOfAMap(const Ids& ids) {
    std::unordered_map<ProjectAttributeId, Bytes> map;
    for (const ProjectAttributeId id : ids) {
        map.try_emplace(id);
    }
    Ids inOrder;
    for (const auto& [id, value] : map) {
        inOrder.push_back(id);
    }
    return inOrder;
}

TEST(AttributeIds, ListsEveryIdOnceInTheOrderOfAnUnorderedMap) {
    const TemporaryFolder folder;
    EXPECT_TRUE(ProjectFile().attributeIds().empty());
    for (const std::uint64_t range : {6ULL, 100ULL, 1ULL << 32}) {
        for (const std::size_t count : {1U, 5U, 13U, 14U, 200U}) {
            ProjectImage image;
            Ids all;
            for (std::size_t i = 0; i < count; ++i) {
                all.push_back(static_cast<ProjectAttributeId>(randomBelow(range)));
                image.directory.push_back({.id = all.back(), .offset = 0, .size = 1});
            }
            ProjectFile file;
            ASSERT_TRUE(file.load(folder.write("project", image.bytes()).c_str()));
            EXPECT_EQ(file.attributeIds(), inOrderOfAMap(all));
            for (const ProjectAttributeId id : {0xFFFFFFFFU, 4U, 50U}) {
                file.insertAttribute(id, {1});
                all.push_back(id);
            }
            EXPECT_EQ(file.attributeIds(), inOrderOfAMap(all));
        }
    }
}

TEST(Attributes, AreListedOnceInAscendingOrderWithTheFirstValue) {
    ProjectImage image;
    image.values = {10, 20, 30};
    image.directory = {{9, 84, 1}, {2, 85, 1}, {9, 86, 1}, {0xFFFFFFFF, 84, 3}, {2, 84, 3}};
    const TemporaryFolder folder;
    ProjectFile file;
    ASSERT_TRUE(file.load(folder.write("project", image.bytes()).c_str()));
    file.insertAttribute(5, {50, 51});
    file.insertAttribute(9, {90});
    Ids ids;
    for (const ProjectAttribute& attribute : file.attributes()) {
        ids.push_back(attribute.id);
        EXPECT_EQ(Bytes(attribute.value.begin(), attribute.value.end()),
                  file.getBytes(attribute.id));
    }
    EXPECT_EQ(ids, (Ids{2, 5, 9, 0xFFFFFFFF}));
    EXPECT_EQ(valuesOf(file),
              (AttributeValues{{2, {20}}, {5, {50, 51}}, {9, {10}}, {0xFFFFFFFF, {10, 20, 30}}}));
    EXPECT_TRUE(ProjectFile().attributes().empty());
}

TEST(Directory, HoldsTheEntriesOfTheFileButThoseErased) {
    ProjectImage image = projectImage({{1, {10}}, {2, {20}}, {3, {30}}});
    image.directory[2].id = 1;
    const TemporaryFolder folder;
    ProjectFile file;
    ASSERT_TRUE(file.load(folder.write("project", image.bytes()).c_str()));
    file.insertAttribute(7, {1});
    ASSERT_EQ(file.directory().size(), 3U);
    EXPECT_EQ(file.directory()[2].id, 1U);
    EXPECT_EQ(file.directory()[2].offset, 62U);
    EXPECT_EQ(file.directory()[2].size, 1U);
    EXPECT_TRUE(file.eraseAttribute(1));
    ASSERT_EQ(file.directory().size(), 1U);
    EXPECT_EQ(file.directory()[0].id, 2U);
    EXPECT_EQ(file.attributeSize(1), 0U);
}

TEST(Clear, RemovesAttributesAndPath) {
    ProjectFile file;
    file.path = "somewhere";
    file.insertAttribute(1, {1});
    EXPECT_FALSE(file.isEmpty());
    file.clear();
    EXPECT_TRUE(file.isEmpty());
    EXPECT_EQ(file.path, "");
}

TEST(ProjectFile, CopyHasValuesOfItsOwn) {
    ProjectFile file;
    file.path = "somewhere";
    file.insertAttribute(1, {1});
    ProjectFile copy = file;
    EXPECT_EQ(copy.path, "somewhere");
    copy.eraseAttribute(1);
    copy.insertAttribute(1, {9});
    copy.insertAttribute(2, {2});
    EXPECT_EQ(copy.getBytes(1), Bytes{9});
    EXPECT_EQ(file.getBytes(1), Bytes{1});
    EXPECT_EQ(file.attributeSize(2), 0U);
}

TEST(ProjectFile, FindsIdsThatShareABucketOfAnUnorderedMap) {
    const std::unordered_map<ProjectAttributeId, Bytes> map = {{3, {1}}, {4, {2}}, {5, {3}}};
    ProjectFile file;
    for (const auto& [id, value] : map) {
        file.insertAttribute(id, value);
    }
    const auto buckets = static_cast<ProjectAttributeId>(map.bucket_count());
    const ProjectAttributeId sharing = 4 + buckets;
    const ProjectAttributeId absent = 4 + 2 * buckets;
    ASSERT_TRUE(file.insertAttribute(sharing, {4}));

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
