#include "engine/key_rules.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "tests/support/attribute_values.h"
#include "tests/support/key_report.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"

namespace {

using enum KeyFault;

ProjectKeyRecord recordOf(const AttributeValues& values) {
    ProjectKeyRecord record;
    record.loadFromAttributes(projectOf(values));
    return record;
}

/// A sound key with other values, and without those that are empty here.
ProjectKeyRecord keyWith(const AttributeValues& changes) {
    AttributeValues values = keyAttributes(keyWithBaseMultiple("5"));
    for (const auto& [id, value] : changes) {
        values[id] = value;
        if (value.empty()) {
            values.erase(id);
        }
    }
    return recordOf(values);
}

/// A key with these changes and what stands against signing and verifying with it.
struct KeyCase {
    AttributeValues changes;
    KeyReport signing;
    KeyReport verifying;
};

void expectFaults(const std::vector<KeyCase>& cases) {
    for (const KeyCase& each : cases) {
        const ProjectKeyRecord record = keyWith(each.changes);
        expectReport(signingFault(record), each.signing);
        expectReport(verifyingFault(record), each.verifying);
    }
}

TEST(CoordinateFault, AsksForTheDegreeAlone) {
    for (const ProjectAttributeId id : {72U, 73U, 75U, 76U}) {
        const auto faultOf = [id](const Bytes& value) {
            return coordinateFault(recordOf({{id, value}}), id);
        };
        EXPECT_EQ(faultOf(elementValue(163, std::string(48, 'F'))).fault, none);
        EXPECT_EQ(faultOf({163}).fault, none);
        for (const std::uint32_t bits : {0U, 1U, 162U, 164U, 512U}) {
            expectReport(faultOf(elementValue(bits, "")), {degree, id, bits, 163});
        }
        expectReport(faultOf(elementValue(513, "")), {tooManyBits, id, 513, 512});
        expectReport(coordinateFault(recordOf({}), id), {absent, id, 0, 0});
    }
}

TEST(KeyRules, FindNothingInASoundKey) {
    expectFaults({{{}, {}, {}}});
}

TEST(KeyRules, AskForAScalarForSigningAlone) {
    expectFaults({{{{74, {}}}, {absent, 74, 0, 0}, {}},
                  {{{74, Bytes(297, 1)}}, {tooLarge, 74, 297, 296}, {}},
                  {{{74, integerValue(64, Bytes(8))}}, {zeroScalar, 74, 64, 320}, {}}});
}

TEST(KeyRules, AskForTheDegreeOfThePublicPointForVerifyingAlone) {
    const Bytes other = elementValue(162, "1");
    expectFaults({{{{75, other}, {76, other}}, {}, {degree, 75, 162, 163}}});
}

TEST(KeyRules, AskForEachCoordinate) {
    const Bytes other = elementValue(162, "1");
    const KeyReport differing = {bitsDiffer, 76, 163, 162};
    for (const ProjectAttributeId id : {72U, 73U}) {
        expectFaults({{{{id, {}}}, {absent, id, 0, 0}, {absent, id, 0, 0}},
                      {{{id, other}}, {degree, id, 162, 163}, {degree, id, 162, 163}}});
    }
    for (const ProjectAttributeId id : {75U, 76U}) {
        expectFaults({{{{id, {}}}, {absent, id, 0, 0}, {absent, id, 0, 0}}});
    }
    expectFaults({{{{75, other}}, differing, differing}});
}

TEST(KeyRules, TellOfTheScalarThenOfThePublicPointThenOfTheBasePoint) {
    const Bytes other = elementValue(162, "1");
    expectFaults({
        {{{72, {}}, {73, {}}, {74, {}}, {75, {}}, {76, {}}},
         {absent, 74, 0, 0},
         {absent, 75, 0, 0}},
        {{{72, {}}, {73, {}}, {75, {}}, {76, {}}}, {absent, 75, 0, 0}, {absent, 75, 0, 0}},
        {{{72, {}}, {73, {}}, {76, {}}}, {absent, 76, 0, 0}, {absent, 76, 0, 0}},
        {{{72, {}}, {73, {}}, {75, other}, {76, other}}, {absent, 72, 0, 0}, {absent, 72, 0, 0}},
        {{{73, {}}, {75, other}, {76, other}}, {absent, 73, 0, 0}, {absent, 73, 0, 0}},
    });
}

}  // namespace
