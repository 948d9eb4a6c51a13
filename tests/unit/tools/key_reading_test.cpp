#include "tools/project/key_reading.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>

#include "tests/support/attribute_values.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/unit/tools/refusal_text.h"

namespace {

class KeyReading : public testing::Test {
protected:
    /// Both refusals once an attribute has this value, or is absent.
    std::array<std::optional<Refusal>, 2> refusals(std::uint32_t id,
                                                   const std::optional<Bytes>& value) const {
        AttributeValues values = attributes;
        values.erase(id);
        if (value.has_value()) {
            values[id] = *value;
        }
        const ProjectFile project = projectOf(values);
        return {signingRefusal(project), verifyingRefusal(project)};
    }

    /// Both refusals are this one.
    void expectBoth(std::uint32_t id, const std::optional<Bytes>& value,
                    const std::string& refusal) const {
        EXPECT_EQ(refusals(id, value)[0], refusal);
        EXPECT_EQ(refusals(id, value)[1], refusal);
    }

    const AttributeValues attributes = keyAttributes(randomProjectKey());
};

TEST_F(KeyReading, FindsNothingInASoundKey) {
    EXPECT_EQ(signingRefusal(projectOf(attributes)), std::nullopt);
    EXPECT_EQ(verifyingRefusal(projectOf(attributes)), std::nullopt);
}

TEST_F(KeyReading, NamesTheAttributeThatIsAbsent) {
    expectBoth(72, std::nullopt, "attribute 72 (x of the base point) is absent");
    expectBoth(73, std::nullopt, "attribute 73 (y of the base point) is absent");
    expectBoth(75, std::nullopt, "attribute 75 (x of the public point) is absent");
    expectBoth(76, std::nullopt, "attribute 76 (y of the public point) is absent");
}

TEST_F(KeyReading, WantsAScalarForSigningAlone) {
    const auto without = refusals(74, std::nullopt);
    EXPECT_EQ(without[0],
              "attribute 74 (private scalar) is absent; a project without it only verifies");
    EXPECT_EQ(without[1], std::nullopt);
}

TEST_F(KeyReading, TellsOfAScalarThatCountsAsAbsentOrZero) {
    EXPECT_EQ(refusals(74, Bytes(297, 1))[0],
              "attribute 74 (private scalar) has 297 bytes, of which at most 296 are taken, and "
              "counts as absent");
    EXPECT_EQ(refusals(74, integerValue(321, Bytes(41, 1)))[0],
              "attribute 74 (private scalar) states 321 bits, has room for 320, and counts as "
              "absent");
    EXPECT_EQ(refusals(74, integerValue(0, {}))[0], "attribute 74 (private scalar) is zero");
    EXPECT_EQ(refusals(74, integerValue(64, Bytes(8)))[0], "attribute 74 (private scalar) is zero");
    EXPECT_EQ(refusals(74, integerValue(320, Bytes(40, 1)))[0], std::nullopt);
    // Longer than a limb, it counts though all its limbs are zero.
    EXPECT_EQ(refusals(74, integerValue(65, Bytes(9)))[0], std::nullopt);
    // The sign is no part of the bit count.
    EXPECT_EQ(refusals(74, integerValue(0x80000008, {5}))[0], std::nullopt);
}

TEST_F(KeyReading, TellsOfACoordinateThatCountsAsAbsent) {
    expectBoth(76, Bytes(297, 1),
               "attribute 76 (y of the public point) has 297 bytes, of which at most 296 are "
               "taken, and counts as absent");
    expectBoth(72, elementValue(513, "1"),
               "attribute 72 (x of the base point) states 513 bits, has room for 512, and counts "
               "as absent");
}

TEST_F(KeyReading, TellsOfAnotherDegree) {
    expectBoth(73, elementValue(164, "1"),
               "attribute 73 (y of the base point) states 164 bits instead of 163");
    expectBoth(73, Bytes{1}, "attribute 73 (y of the base point) states 1 bit instead of 163");
    expectBoth(75, elementValue(160, "1"),
               "attributes 75 and 76 (the public point) state different numbers of bits, 160 and "
               "163");
    AttributeValues values = attributes;
    values[75] = elementValue(160, "1");
    values[76] = elementValue(160, "1");
    EXPECT_EQ(signingRefusal(projectOf(values)), std::nullopt);
    EXPECT_EQ(verifyingRefusal(projectOf(values)),
              "attribute 75 (x of the public point) states 160 bits instead of 163");
    values[75] = Bytes{0, 0, 0, 0};
    values[76] = Bytes{0};
    EXPECT_EQ(signingRefusal(projectOf(values)),
              "attribute 75 (x of the public point) states 0 bits");
}

TEST_F(KeyReading, TellsOfTheScalarFirstAndOfTheBasePointLast) {
    EXPECT_EQ(signingRefusal(ProjectFile{}),
              "attribute 74 (private scalar) is absent; a project without it only verifies");
    EXPECT_EQ(verifyingRefusal(ProjectFile{}), "attribute 75 (x of the public point) is absent");
}

}  // namespace
