#include <gtest/gtest.h>

#include <set>
#include <string>

#include "random/random_generator.h"
#include "tests/support/attribute_values.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/signature_vectors.h"
#include "tools/project/new_project.h"

namespace {

class NewProject : public testing::Test {
protected:
    static AttributeValues made() {
        return attributesOf(newProject(BasePoint::random, std::nullopt));
    }

    static AttributeValues attributesOf(const ProjectFile& project) { return valuesOf(project); }
};

TEST_F(NewProject, HasTheFiveAttributesOfAKeyInTheirStoredForms) {
    for (int round = 0; round < 20; ++round) {
        const AttributeValues values = made();
        ASSERT_EQ(values.size(), 5U);
        for (const std::uint32_t id : {72U, 73U, 75U, 76U}) {
            const Bytes& value = values.at(id);
            ASSERT_EQ(value.size(), 32U);
            EXPECT_EQ(Bytes(value.begin(), value.begin() + 8), (Bytes{163, 0, 0, 0, 0, 0, 0, 0}));
            EXPECT_LT(value[28], 8) << "bits above the degree";
            EXPECT_EQ(Bytes(value.begin() + 29, value.end()), Bytes(3));
        }
        // The bit length is that of the scalar, so that no zero byte stands at its top.
        EXPECT_EQ(values.at(74), integerValue(keyFromAttributes(values).scalar));
    }
}

TEST_F(NewProject, HasABasePointOfTheOrderAndItsMultipleAsJudgedByLibcrypto) {
    for (int round = 0; round < 100; ++round) {
        const AttributeValues values = made();
        const ProjectKey key = keyFromAttributes(values);
        EXPECT_TRUE(judgeAcceptsKey(key));
        EXPECT_NE(elementValue(163, keyWithBaseMultiple(key.scalar).baseX), values.at(72))
            << "one draw served for both";
    }
}

TEST_F(NewProject, HasAKeyOfItsOwnEachTime) {
    std::set<std::string> scalars;
    std::set<std::string> basePoints;
    for (int round = 0; round < 50; ++round) {
        const ProjectKey key = keyFromAttributes(made());
        scalars.insert(key.scalar);
        basePoints.insert(key.baseX);
    }
    EXPECT_EQ(scalars.size(), 50U);
    EXPECT_EQ(basePoints.size(), 50U);
}

TEST_F(NewProject, MultipliesThePublishedBasePointByTheFirstScalarDrawn) {
    for (const GeneratorCase& generator : generatorCases()) {
        RandomGenerator::instance().seedFromWord(generator.seed);
        const AttributeValues values = made();
        const ProjectKey expected = keyWithBaseMultiple(generator.nonce);
        EXPECT_EQ(values.at(72), elementValue(163, expected.baseX));
        EXPECT_EQ(values.at(73), elementValue(163, expected.baseY));
    }
}

TEST_F(NewProject, TakesThePublishedBasePoint) {
    const ProjectKey key =
        keyFromAttributes(attributesOf(newProject(BasePoint::standard, std::nullopt)));
    const ProjectKey published = keyWithBaseMultiple("1");
    EXPECT_EQ(littleEndianBytes(key.baseX), littleEndianBytes(published.baseX));
    EXPECT_EQ(littleEndianBytes(key.baseY), littleEndianBytes(published.baseY));
    EXPECT_TRUE(judgeAcceptsKey(key));
}

TEST_F(NewProject, TakesAGivenScalar) {
    for (const BasePoint base : {BasePoint::standard, BasePoint::random}) {
        const ScalarReading reading = readScalar("0123456789abcdefABCDEF");
        ASSERT_EQ(reading.refusal, std::nullopt);
        const ProjectKey key = keyFromAttributes(attributesOf(newProject(base, reading.scalar)));
        EXPECT_EQ(littleEndianBytes(key.scalar), littleEndianBytes("0123456789abcdefabcdef"));
        EXPECT_TRUE(judgeAcceptsKey(key));
    }
}

TEST_F(NewProject, TakesTheSmallestAndTheGreatestScalar) {
    for (const char* digits : {"1", "40000000000000000000292FE77E70C12A4234C32"}) {
        const ScalarReading reading = readScalar(digits);
        ASSERT_EQ(reading.refusal, std::nullopt);
        const ProjectKey key =
            keyFromAttributes(attributesOf(newProject(BasePoint::random, reading.scalar)));
        EXPECT_EQ(littleEndianBytes(key.scalar), littleEndianBytes(digits));
        EXPECT_TRUE(judgeAcceptsKey(key));
    }
}

TEST_F(NewProject, ThatOnlyVerifiesHasTheCoordinatesThatTheProgramReads) {
    AttributeValues values = made();
    values[72].resize(20);
    values[73].resize(296, 0xFF);
    values[75][31] = 0xFF;
    values[200] = {1};
    const ProjectFile project = projectOf(values);
    AttributeValues expected = values;
    expected.erase(74);
    expected.erase(200);
    // What is missing at the top counts as zeros, and what stands there is read.
    expected[72].resize(32);
    expected[73].resize(32);
    EXPECT_EQ(attributesOf(verifyingProject(project)), expected);
}

TEST(ReadScalar, PassesOverWhiteSpaceAroundAndZerosInFront) {
    const ScalarReading reading = readScalar(" \t\r\n" + std::string(100, '0') + "1f\n \r\n");
    EXPECT_EQ(reading.refusal, std::nullopt);
    EXPECT_EQ(reading.scalar.words[0], 0x1FU);
    EXPECT_EQ(reading.scalar.degree, 163U);
}

TEST(ReadScalar, TellsWhatIsWrong) {
    EXPECT_EQ(readScalar("").refusal, "holds no digits");
    EXPECT_EQ(readScalar(" \n").refusal, "holds no digits");
    for (const char* text : {"12 34", "0x12", "g", "-1", "12\n34"}) {
        EXPECT_EQ(readScalar(text).refusal, "has a character that is not a hexadecimal digit")
            << text;
    }
    EXPECT_EQ(readScalar(std::string("1\0", 2)).refusal,
              "has a character that is not a hexadecimal digit");
    EXPECT_EQ(readScalar("000").refusal, "the scalar is zero");
    for (const std::string& digits : {std::string(curveOrderDigits), std::string(41, 'f'),
                                      "1" + std::string(41, '0'), "1" + std::string(2000, '0')}) {
        EXPECT_EQ(readScalar(digits).refusal, "the scalar is not below the order") << digits;
    }
}

}  // namespace
