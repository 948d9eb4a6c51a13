#include "frontend/json_members.h"

#include <gtest/gtest.h>

// The events that the parser tells of a text are tested through fillRecordFromJson.

TEST(JsonMembers, TakeABinaryValueForOneOfAnotherType) {
    // No JSON text holds one, other formats of the library do.
    nlohmann::json::binary_t bytes;
    RequestRecord record;
    JsonMembers alone(record);
    EXPECT_FALSE(alone.binary(bytes));
    EXPECT_EQ(alone.fault(), RequestFault::jsonNoObject);
    JsonMembers members(record);
    members.start_object(1);
    members.key("other");
    EXPECT_TRUE(members.binary(bytes));
    EXPECT_EQ(members.fault(), RequestFault::none);
    members.key("project");
    EXPECT_TRUE(members.binary(bytes));
    EXPECT_EQ(members.fault(), RequestFault::jsonMemberType);
}
