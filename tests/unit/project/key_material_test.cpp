#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "project/project_key_record.h"
#include "tests/support/attribute_values.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"

namespace {

constexpr std::uint64_t marker = 0x5A5A5A5A5A5A5A5A;

core::FieldElement markedElement(std::uint64_t capacity = 112) {
    core::FieldElement e{.degree = marker, .capacity = capacity};
    e.words.fill(marker);
    return e;
}

core::CoreInteger markedInteger() {
    core::CoreInteger value{.lengthAndSign = 7, .capacity = 15};
    value.limbs.fill(marker);
    return value;
}

bool isUntouched(const core::FieldElement& e) {
    const core::FieldElement fresh = markedElement(e.capacity);
    return e.degree == fresh.degree && e.words == fresh.words;
}

bool isUntouched(const core::CoreInteger& value) {
    const core::CoreInteger fresh = markedInteger();
    return value.lengthAndSign == fresh.lengthAndSign && value.capacity == fresh.capacity &&
           value.limbs == fresh.limbs;
}

/// Five different values, no point among them: copying checks nothing.
const AttributeValues someKey = {
    {72, elementValue(163, "72727272727272727272727272727272727272727")},
    {73, elementValue(163, "73737373737373737373737373737373737373737")},
    {74, integerValue("7474747474747474747474747474747474747474")},
    {75, elementValue(163, "75757575757575757575757575757575757575757")},
    {76, elementValue(163, "76767676767676767676767676767676767676767")}};

AttributeValues without(std::uint32_t id) {
    AttributeValues values = someKey;
    values.erase(id);
    return values;
}

class CopyKeyMaterial : public testing::Test {
protected:
    core::FieldElement x = markedElement();
    core::FieldElement y = markedElement();
    core::FieldElement publicX = markedElement();
    core::FieldElement publicY = markedElement();
    core::CoreInteger scalar = markedInteger();
};

TEST_F(CopyKeyMaterial, WritesTheFiveValues) {
    const ProjectKeyRecord record = recordOf(someKey);
    record.copyKeyMaterial(&x, &y, &publicX, &publicY, &scalar);
    for (const core::FieldElement* e : {&x, &y, &publicX, &publicY}) {
        EXPECT_EQ(e->degree, 163U);
        EXPECT_EQ(e->capacity, 112U);
    }
    EXPECT_EQ(x.words[0], 0x2727272727272727U);
    EXPECT_EQ(x.words[2], 0x727272727U);
    EXPECT_EQ(y.words[0], 0x3737373737373737U);
    EXPECT_EQ(publicX.words[0], 0x5757575757575757U);
    EXPECT_EQ(publicY.words[0], 0x6767676767676767U);
    EXPECT_EQ(scalar.lengthAndSign, 3U);
    EXPECT_EQ(scalar.capacity, 15U);
    EXPECT_EQ(scalar.limbs[0], 0x7474747474747474U);
    EXPECT_EQ(scalar.limbs[2], 0x74747474U);
}

TEST_F(CopyKeyMaterial, CopiesAsManyWordsAsTheSmallerCapacityHolds) {
    core::FieldElement narrow = markedElement(16);
    const ProjectKeyRecord record = recordOf(someKey);
    record.copyKeyMaterial(&x, &narrow, nullptr, nullptr, nullptr);
    EXPECT_EQ(x.words[2], 0x727272727U);
    EXPECT_EQ(x.words[7], 0U);
    EXPECT_EQ(x.words[8], marker);
    EXPECT_EQ(narrow.words[1], 0x3737373737373737U);
    EXPECT_EQ(narrow.words[2], marker);
    EXPECT_EQ(narrow.degree, 163U);
}

TEST_F(CopyKeyMaterial, PassesOverOmittedOutputs) {
    const ProjectKeyRecord record = recordOf(someKey);
    record.copyKeyMaterial(nullptr, nullptr, nullptr, nullptr, nullptr);
    record.copyKeyMaterial(nullptr, &y, nullptr, nullptr, nullptr);
    EXPECT_EQ(y.words[0], 0x3737373737373737U);
    record.copyKeyMaterial(nullptr, nullptr, &publicX, nullptr, nullptr);
    EXPECT_EQ(publicX.words[0], 0x5757575757575757U);
    record.copyKeyMaterial(nullptr, nullptr, nullptr, &publicY, nullptr);
    EXPECT_EQ(publicY.words[0], 0x6767676767676767U);
    EXPECT_TRUE(isUntouched(scalar));
    record.copyKeyMaterial(nullptr, nullptr, nullptr, nullptr, &scalar);
    EXPECT_EQ(scalar.limbs[0], 0x7474747474747474U);
    EXPECT_TRUE(isUntouched(x));
    record.copyKeyMaterial(&x, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(x.words[0], 0x2727272727272727U);
}

TEST_F(CopyKeyMaterial, WritesNoCoordinateWithoutAPublicPoint) {
    for (const std::uint32_t missing : {75U, 76U}) {
        recordOf(without(missing)).copyKeyMaterial(&x, &y, &publicX, &publicY, &scalar);
        EXPECT_TRUE(isUntouched(x));
        EXPECT_TRUE(isUntouched(y));
        EXPECT_TRUE(isUntouched(publicX));
        EXPECT_TRUE(isUntouched(publicY));
        EXPECT_EQ(scalar.limbs[0], 0x7474747474747474U);
        scalar = markedInteger();
    }
}

TEST_F(CopyKeyMaterial, WritesNoScalarWithoutOne) {
    AttributeValues zero = someKey;
    zero[74] = integerValue(64, Bytes(8));
    for (const AttributeValues& values : {without(74), zero}) {
        recordOf(values).copyKeyMaterial(&x, &y, &publicX, &publicY, &scalar);
        EXPECT_TRUE(isUntouched(scalar));
        EXPECT_EQ(x.words[0], 0x2727272727272727U);
    }
}

TEST_F(CopyKeyMaterial, CopiesABasePointThatIsAbsentAsEmpty) {
    recordOf(without(72)).copyKeyMaterial(&x, &y, nullptr, nullptr, nullptr);
    EXPECT_EQ(x.degree, 0U);
    EXPECT_EQ(x.words[0], 0U);
    EXPECT_EQ(y.degree, 163U);
}

}  // namespace
