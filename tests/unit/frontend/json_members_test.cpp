#include "frontend/json_members.h"

#include <gtest/gtest.h>

// The events that the parser tells of a text are tested through fillRecordFromJson.

TEST(JsonMembers, TakeABinaryValueForOneOfAnotherType) {
    // No JSON text holds one, other formats of the library do.
    RequestRecord record;
    JsonMembers members(record);
    nlohmann::json::binary_t bytes;
    EXPECT_FALSE(members.binary(bytes));
    members.start_object(1);
    members.key("project");
    EXPECT_TRUE(members.binary(bytes));
    EXPECT_FALSE(members.haveTheirTypes());
    members.key("other");
    EXPECT_TRUE(members.binary(bytes));
    EXPECT_FALSE(members.haveTheirTypes());
}
