#include "tests/support/hostile_project.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "project/project_file.h"
#include "tests/support/attribute_values.h"
#include "tests/support/failing_calls.h"
#include "tests/support/reference_project.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr std::size_t fileSize = 20000;
const AttributeValues lastValues = {{1, {10}}, {2, Bytes(296, 20)}};

class HostileDirectory : public testing::TestWithParam<HostileProject> {
protected:
    const TemporaryFolder folder;
    const Bytes bytes = hostileBytes(GetParam(), fileSize, lastValues);
    const std::string path = folder.write("project", bytes);
    ProjectFile file;
};

TEST_P(HostileDirectory, TakesTwiceItsSizeOfMemory) {
    ScopedFailingCalls calls;
    ASSERT_TRUE(file.load(path.c_str()));
    Bytes buffer(296);
    EXPECT_TRUE(file.getAttribute(2, buffer.data(), 296));
    EXPECT_LE(calls.requestedBytes, 2 * fileSize + 1000);
    EXPECT_EQ(buffer, Bytes(296, 20));
}

TEST_P(HostileDirectory, HoldsWhatASlowReaderFinds) {
    ASSERT_TRUE(file.load(path.c_str()));
    EXPECT_EQ(valuesOf(file), referenceProject(bytes).attributes);
    EXPECT_EQ(file.attributeIds().size(), file.attributes().size());
    for (const auto& [id, value] : lastValues) {
        EXPECT_EQ(file.getBytes(id), value);
    }
    EXPECT_EQ(file.getBytes(3), Bytes());
}

TEST_P(HostileDirectory, IsRefusedForTheSizeOfItsLastEntry) {
    constexpr std::size_t valueBytes = 1 + 296;
    constexpr std::size_t entries = (fileSize - 24 - valueBytes) / 12;
    Bytes spoilt = bytes;
    std::fill_n(spoilt.begin() + 24 + 12 * entries - 4, 4, std::uint8_t{0});
    folder.write("project", withDigest(spoilt));
    ScopedFailingCalls calls;
    EXPECT_FALSE(file.load(path.c_str()));
    EXPECT_TRUE(file.isEmpty());
    EXPECT_LE(calls.requestedBytes, 2 * fileSize + 1000);
}

INSTANTIATE_TEST_SUITE_P(Kinds, HostileDirectory, testing::ValuesIn(hostileProjects()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
