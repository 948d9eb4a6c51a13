#include "tools/project/key_reading.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>

#include "engine/sign.h"
#include "engine/signature_engine.h"
#include "engine/verify.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/unit/tools/refusal_text.h"

namespace {

const Bytes data = {'d', 'a', 't', 'a'};

class KeyReading : public testing::Test {
protected:
    static ProjectFile projectOf(const AttributeValues& values) {
        ProjectFile project;
        for (const auto& [id, value] : values) {
            project.insertAttribute(id, value);
        }
        return project;
    }

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

    const ProjectKey key = randomProjectKey();
    const AttributeValues attributes = keyAttributes(key);
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
    EXPECT_EQ(without[0], "attribute 74 (private scalar) is absent");
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
    EXPECT_EQ(signingRefusal(ProjectFile{}), "attribute 74 (private scalar) is absent");
    EXPECT_EQ(verifyingRefusal(ProjectFile{}), "attribute 75 (x of the public point) is absent");
}

/// A value that may count as anything.
Bytes randomValue(const Bytes& sound) {
    constexpr std::array<std::uint32_t, 9> counts = {0, 1, 64, 160, 163, 164, 320, 513, 0x800000A3};
    switch (randomBelow(6)) {
        case 0:
            return Bytes(1 + randomBelow(300));
        case 1:
            return elementValue(counts.at(randomBelow(8)), "1");
        case 2:
            return integerValue(counts.at(randomBelow(counts.size())), randomBytes(42));
        default:
            return sound;
    }
}

TEST_F(KeyReading, AgreesWithTheEngineOnRandomKeys) {
    const std::string text = signatureText(judgeSign(key, data));
    int signing = 0;
    int differ = 0;
    for (int round = 0; round < 3000; ++round) {
        AttributeValues values;
        for (const auto& [id, value] : attributes) {
            if (randomBelow(12) != 0) {
                values[id] = randomValue(value);
            }
        }
        const ProjectFile project = projectOf(values);
        std::array<char, signatureBufferSize> buffer{};
        const bool signs = signWithRecord(project, data.data(),
                                          static_cast<std::uint32_t>(data.size()), buffer.data());
        differ += signs != signingRefusal(project).has_value() ? 0 : 1;
        signing += signs ? 1 : 0;
        // A sound key verifies; one that is refused must not.
        const bool verifies = verifyWithRecord(
            project, data.data(), static_cast<std::uint32_t>(data.size()), text.c_str());
        differ += verifies && verifyingRefusal(project).has_value() ? 1 : 0;
    }
    EXPECT_EQ(differ, 0);
    EXPECT_GT(signing, 40);
    EXPECT_LT(signing, 2900);
}

/// The value in another shape that leaves its number alone: another bit count, other unused bytes,
/// or more bytes.
Bytes reshaped(Bytes value) {
    constexpr std::array<std::uint8_t, 8> counts = {0, 1, 31, 160, 162, 164, 192, 255};
    switch (randomBelow(10)) {
        case 0:
            value[0] = counts.at(randomBelow(counts.size()));
            break;
        case 1:
            value[1 + randomBelow(3)] = static_cast<std::uint8_t>(1 + randomBelow(255));
            break;
        case 2:
        case 3:
            value[4 + randomBelow(4)] = static_cast<std::uint8_t>(randomBelow(256));
            break;
        case 4:
        case 5:
            value.resize(290 + randomBelow(10), 0xEE);
            break;
        default:
            break;
    }
    return value;
}

TEST_F(KeyReading, AgreesWithTheEngineOnVerifyingUnderReshapedKeys) {
    const std::string text = signatureText(judgeSign(key, data));
    int verifying = 0;
    int differ = 0;
    for (int round = 0; round < 2000; ++round) {
        AttributeValues values;
        for (const auto& [id, value] : attributes) {
            if (randomBelow(30) != 0) {
                values[id] = id == 74 ? randomValue(value) : reshaped(value);
            }
        }
        const ProjectFile project = projectOf(values);
        const bool verifies = verifyWithRecord(
            project, data.data(), static_cast<std::uint32_t>(data.size()), text.c_str());
        differ += verifies != verifyingRefusal(project).has_value() ? 0 : 1;
        verifying += verifies ? 1 : 0;
    }
    EXPECT_EQ(differ, 0);
    EXPECT_GT(verifying, 100);
    EXPECT_LT(verifying, 1900);
}

}  // namespace
