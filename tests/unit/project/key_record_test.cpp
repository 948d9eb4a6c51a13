#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "project/project_key_record.h"
#include "tests/support/attribute_values.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/random_operands.h"

namespace {

using Words = std::vector<std::uint64_t>;

Words wordsOf(const core::FieldElement& e) {
    return {e.words.begin(), e.words.end()};
}

/// All words of an element that holds these bytes, least significant first.
Words elementWords(const Bytes& bytes) {
    std::array<std::uint64_t, core::fieldWordRoom> words{};
    if (!bytes.empty()) {
        std::memcpy(words.data(), bytes.data(), bytes.size());
    }
    return {words.begin(), words.end()};
}

/// A record of which attribute 75 alone is there.
core::FieldElement loadedElement(const Bytes& value) {
    return recordOf({{75, value}}).publicPointX;
}

ProjectKeyRecord recordOfScalar(const Bytes& value) {
    return recordOf({{74, value}});
}

void expectEmpty(const core::FieldElement& e) {
    EXPECT_EQ(e.degree, 0U);
    EXPECT_EQ(wordsOf(e), Words(core::fieldWordRoom));
}

TEST(ProjectKeyRecord, StartsEmpty) {
    const ProjectKeyRecord record;
    for (const auto* e :
         {&record.basePointX, &record.basePointY, &record.publicPointX, &record.publicPointY}) {
        expectEmpty(*e);
        EXPECT_EQ(e->capacity, 64U);
    }
    EXPECT_FALSE(record.privateScalar.has_value());
    EXPECT_FALSE(record.hasPrivateScalar());
    EXPECT_FALSE(record.hasPublicPoint());
}

TEST(LoadFromAttributes, GivesAUsableRecordForTheKeyAttributesAlone) {
    const ProjectKey key = randomProjectKey();
    const ProjectKeyRecord record = recordOf(keyAttributes(key));
    EXPECT_TRUE(record.hasPrivateScalar());
    EXPECT_TRUE(record.hasPublicPoint());
    EXPECT_EQ(record.basePointX.degree, 163U);
    EXPECT_EQ(record.publicPointY.degree, 163U);
    EXPECT_EQ(wordsOf(record.basePointX), elementWords(littleEndianBytes(key.baseX)));
    EXPECT_EQ(wordsOf(record.basePointY), elementWords(littleEndianBytes(key.baseY)));
    EXPECT_EQ(wordsOf(record.publicPointX), elementWords(littleEndianBytes(key.publicX)));
    EXPECT_EQ(wordsOf(record.publicPointY), elementWords(littleEndianBytes(key.publicY)));
    Bytes scalar(24);
    std::memcpy(scalar.data(), record.privateScalar->limbs.data(), scalar.size());
    Bytes expected = littleEndianBytes(key.scalar);
    expected.resize(scalar.size());
    EXPECT_EQ(scalar, expected);
    EXPECT_EQ(record.privateScalar->lengthAndSign, 3U);
    EXPECT_EQ(record.privateScalar->capacity, 0U);
}

TEST(LoadFromAttributes, IsEmptyForAProjectWithoutKey) {
    const ProjectKeyRecord record = recordOf({{1, {1}}, {71, {1, 2, 3, 4}}, {77, Bytes(32, 1)}});
    expectEmpty(record.basePointX);
    EXPECT_FALSE(record.hasPrivateScalar());
    EXPECT_FALSE(record.hasPublicPoint());
}

TEST(LoadFromAttributes, ReplacesWhatTheRecordHeld) {
    ProjectKeyRecord record = recordOf(keyAttributes(randomProjectKey()));
    record.loadFromAttributes(projectOf({{72, elementValue(32, "7")}}));
    EXPECT_EQ(record.basePointX.degree, 32U);
    EXPECT_EQ(wordsOf(record.basePointX), elementWords({7}));
    expectEmpty(record.basePointY);
    expectEmpty(record.publicPointX);
    expectEmpty(record.publicPointY);
    EXPECT_FALSE(record.privateScalar.has_value());
}

TEST(LoadFromAttributes, FillsSixWordsForTheCurvesDegreeWithoutMasking) {
    const Bytes words(24, 0xFF);
    Bytes value = integerValue(163, Bytes(4));
    value.insert(value.end(), words.begin(), words.end());
    value.insert(value.end(), 8, 0xEE);
    const core::FieldElement e = loadedElement(value);
    EXPECT_EQ(e.degree, 163U);
    EXPECT_EQ(wordsOf(e), elementWords(words));
}

TEST(LoadFromAttributes, ReadsWholeWordsOfThirtyTwoBits) {
    for (const std::uint32_t bits : {1U, 31U, 32U, 33U, 64U, 65U, 160U, 161U, 511U, 512U}) {
        const Bytes words = randomBytes(72);
        Bytes value = integerValue(bits, Bytes(4));
        value.insert(value.end(), words.begin(), words.end());
        const core::FieldElement e = loadedElement(value);
        const std::size_t taken = (std::size_t{bits} + 31) / 32 * 4;
        EXPECT_EQ(e.degree, bits);
        EXPECT_EQ(
            wordsOf(e),
            elementWords(Bytes(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(taken))))
            << bits << " bits";
        EXPECT_EQ(e.capacity, 64U);
    }
}

TEST(LoadFromAttributes, PassesOverTheFourBytesBehindTheBitCount) {
    const core::FieldElement e = loadedElement(elementValue(163, "123456789ABCDEF", 0xDD));
    EXPECT_EQ(e.degree, 163U);
    EXPECT_EQ(wordsOf(e), elementWords(littleEndianBytes("123456789ABCDEF")));
}

TEST(LoadFromAttributes, CountsMoreThan512BitsOfAnElementAsAbsent) {
    for (const std::uint32_t bits : {513U, 2304U, 0x7FFFFFFFU, 0x800000A3U, 0xFFFFFFFFU}) {
        Bytes value = integerValue(bits, Bytes(292, 0xFF));
        expectEmpty(loadedElement(value));
    }
}

TEST(LoadFromAttributes, ReadsAnElementOf296BytesAndNoneOf297) {
    Bytes value = elementValue(163, "ABCDEF");
    value.resize(296, 0xEE);
    const core::FieldElement e = loadedElement(value);
    EXPECT_EQ(e.degree, 163U);
    EXPECT_EQ(wordsOf(e), elementWords(littleEndianBytes("ABCDEF")));
    value.push_back(0xEE);
    expectEmpty(loadedElement(value));
}

TEST(LoadFromAttributes, TakesMissingBytesOfAShortElementForZero) {
    const AttributeValues values = {{72, elementValue(163, std::string(48, 'F'))},
                                    {73, {163, 0, 0, 0, 9, 9, 9, 9, 5}},
                                    {75, {163}}};
    const ProjectKeyRecord record = recordOf(values);
    EXPECT_EQ(record.basePointY.degree, 163U);
    EXPECT_EQ(wordsOf(record.basePointY), elementWords({5}));
    EXPECT_EQ(record.publicPointX.degree, 163U);
    EXPECT_EQ(wordsOf(record.publicPointX), elementWords({}));
}

TEST(LoadFromAttributes, TakesMissingBytesOfAShortScalarForZero) {
    const ProjectKeyRecord record = recordOf({{72, elementValue(163, std::string(48, 'F'))},
                                              {73, elementValue(163, std::string(48, 'F'))},
                                              {74, integerValue(100, {1})}});
    ASSERT_TRUE(record.privateScalar.has_value());
    EXPECT_EQ(record.privateScalar->lengthAndSign, 2U);
    EXPECT_EQ(record.privateScalar->limbs[0], 1U);
    EXPECT_EQ(record.privateScalar->limbs[1], 0U);
}

TEST(LoadFromAttributes, LeavesAnElementOfNoBitsEmpty) {
    const Bytes value = integerValue(0, Bytes(28, 0xFF));
    expectEmpty(loadedElement(value));
}

TEST(LoadFromAttributes, ReadsTheScalarsBytesWithoutMasking) {
    for (const std::uint32_t bits : {1U, 7U, 8U, 9U, 63U, 64U, 65U, 128U, 163U, 257U, 320U}) {
        const Bytes magnitude(50, 0xFF);
        const ProjectKeyRecord record = recordOfScalar(integerValue(bits, magnitude));
        ASSERT_TRUE(record.privateScalar.has_value()) << bits << " bits";
        const std::size_t bytes = (std::size_t{bits} + 7) / 8;
        EXPECT_EQ(record.privateScalar->lengthAndSign, (bytes + 7) / 8) << bits << " bits";
        Bytes limbs(64);
        std::memcpy(limbs.data(), record.privateScalar->limbs.data(), limbs.size());
        Bytes expected(bytes, 0xFF);
        expected.resize(limbs.size());
        EXPECT_EQ(limbs, expected) << bits << " bits";
    }
}

TEST(LoadFromAttributes, IgnoresTheTopBitOfTheScalarsBitCount) {
    const Bytes magnitude = randomBytes(21);
    const ProjectKeyRecord plain = recordOfScalar(integerValue(163, magnitude));
    const ProjectKeyRecord marked = recordOfScalar(integerValue(0x80000000U | 163U, magnitude));
    ASSERT_TRUE(marked.hasPrivateScalar());
    EXPECT_EQ(marked.privateScalar->lengthAndSign, 3U);
    EXPECT_EQ(marked.privateScalar->limbs, plain.privateScalar->limbs);
}

TEST(LoadFromAttributes, CountsMoreThan320BitsOfAScalarAsAbsent) {
    for (const std::uint32_t bits : {321U, 2336U, 0x7FFFFFFFU, 0x80000141U, 0xFFFFFFFFU}) {
        const ProjectKeyRecord record = recordOfScalar(integerValue(bits, Bytes(292, 0xFF)));
        EXPECT_FALSE(record.privateScalar.has_value()) << bits << " bits";
        EXPECT_FALSE(record.hasPrivateScalar()) << bits << " bits";
    }
}

TEST(LoadFromAttributes, ReadsAScalarOf296BytesAndNoneOf297) {
    Bytes value = integerValue(163, randomBytes(21));
    value.resize(296, 0xEE);
    EXPECT_TRUE(recordOfScalar(value).hasPrivateScalar());
    value.push_back(0xEE);
    EXPECT_FALSE(recordOfScalar(value).hasPrivateScalar());
}

TEST(HasPrivateScalar, IsFalseForNoBitsAndForOneZeroLimb) {
    EXPECT_FALSE(recordOf({}).hasPrivateScalar());
    EXPECT_FALSE(recordOfScalar({0}).hasPrivateScalar());
    EXPECT_FALSE(recordOfScalar(integerValue(0, Bytes(20, 1))).hasPrivateScalar());
    EXPECT_FALSE(recordOfScalar(integerValue(0x80000000, Bytes(20, 1))).hasPrivateScalar());
    EXPECT_FALSE(recordOfScalar(integerValue(1, Bytes(1))).hasPrivateScalar());
    EXPECT_FALSE(recordOfScalar(integerValue(64, Bytes(8))).hasPrivateScalar());
}

TEST(HasPrivateScalar, IsTrueForOneLimbThatIsNotZero) {
    EXPECT_TRUE(recordOfScalar(integerValue(1, {1})).hasPrivateScalar());
    EXPECT_TRUE(recordOfScalar(integerValue(64, {0, 0, 0, 0, 0, 0, 0, 0x80})).hasPrivateScalar());
}

TEST(HasPrivateScalar, IsTrueForTwoZeroLimbs) {
    EXPECT_TRUE(recordOfScalar(integerValue(65, Bytes(9))).hasPrivateScalar());
    EXPECT_TRUE(recordOfScalar(integerValue(320, Bytes(40))).hasPrivateScalar());
}

TEST(HasPublicPoint, AsksForOneDegreeOfBothCoordinatesThatIsNotZero) {
    const Bytes element = elementValue(163, "1");
    EXPECT_TRUE(recordOf({{75, element}, {76, element}}).hasPublicPoint());
    EXPECT_TRUE(
        recordOf({{75, elementValue(9, "1")}, {76, elementValue(9, "2")}}).hasPublicPoint());
    EXPECT_FALSE(recordOf({{75, element}}).hasPublicPoint());
    EXPECT_FALSE(recordOf({{76, element}}).hasPublicPoint());
    EXPECT_FALSE(recordOf({{72, element}, {73, element}, {74, {1, 0, 0, 0, 1}}}).hasPublicPoint());
    EXPECT_FALSE(recordOf({{75, element}, {76, elementValue(162, "1")}}).hasPublicPoint());
    EXPECT_FALSE(recordOf({{75, elementValue(0, "")}, {76, elementValue(0, "")}}).hasPublicPoint());
}

TEST(HasPublicPoint, LooksAtNoWords) {
    EXPECT_TRUE(
        recordOf({{75, elementValue(163, "0")}, {76, elementValue(163, "0")}}).hasPublicPoint());
}

TEST(HasPublicPoint, IsFalseForACoordinateThatIsTooLong) {
    Bytes value = elementValue(163, "1");
    AttributeValues values = {{75, value}, {76, value}};
    values[75].resize(297);
    EXPECT_FALSE(recordOf(values).hasPublicPoint());
    values[75].resize(296);
    EXPECT_TRUE(recordOf(values).hasPublicPoint());
}

TEST(HasPublicPoint, DoesNotHangOnBasePointOrScalar) {
    AttributeValues values = keyAttributes(randomProjectKey());
    values.erase(72);
    values.erase(73);
    values.erase(74);
    const ProjectKeyRecord record = recordOf(values);
    EXPECT_TRUE(record.hasPublicPoint());
    EXPECT_FALSE(record.hasPrivateScalar());
}

TEST(HasPrivateScalar, DoesNotHangOnThePublicPoint) {
    AttributeValues values = keyAttributes(randomProjectKey());
    values.erase(75);
    const ProjectKeyRecord record = recordOf(values);
    EXPECT_FALSE(record.hasPublicPoint());
    EXPECT_TRUE(record.hasPrivateScalar());
}

}  // namespace
