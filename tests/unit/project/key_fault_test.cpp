#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "project/project_key_record.h"
#include "tests/support/attribute_values.h"
#include "tests/support/key_report.h"
#include "tests/support/project_builder.h"

namespace {

using enum KeyFault;

/// An attribute's value, if it has one, and what it meets.
struct ValueCase {
    std::optional<Bytes> value;
    KeyFault fault = none;
    std::uint32_t found = 0;
    std::uint32_t allowed = 0;

    AttributeValues under(ProjectAttributeId id) const {
        return value.has_value() ? AttributeValues{{id, *value}} : AttributeValues{};
    }
    KeyReport report(ProjectAttributeId id) const {
        return {.fault = fault, .attribute = id, .found = found, .allowed = allowed};
    }
};

Bytes ofSize(Bytes value, std::size_t size) {
    value.resize(size, 0xEE);
    return value;
}

TEST(KeyFaults, OfACoordinateAreThoseThatMakeItCountAsAbsent) {
    const std::vector<ValueCase> cases = {{std::nullopt, absent, 0, 0},
                                          {ofSize(elementValue(163, "1"), 297), tooLarge, 297, 296},
                                          {ofSize(elementValue(513, "1"), 297), tooLarge, 297, 296},
                                          {ofSize(elementValue(163, "1"), 296), none, 163, 512},
                                          {elementValue(513, "1"), tooManyBits, 513, 512},
                                          {elementValue(512, "1"), none, 512, 512},
                                          {Bytes(4, 0xFF), tooManyBits, 0xFFFFFFFF, 512},
                                          {Bytes{163, 0, 0, 0x80}, tooManyBits, 0x800000A3, 512},
                                          {Bytes{163}, none, 163, 512},
                                          {elementValue(0, ""), none, 0, 512}};
    for (const ProjectAttributeId id : {72U, 73U, 75U, 76U}) {
        for (const ValueCase& each : cases) {
            expectReport(recordOf(each.under(id)).loadingOf(id), each.report(id));
        }
    }
}

TEST(KeyFaults, OfTheScalarAreThoseAndZero) {
    const std::vector<ValueCase> cases = {
        {std::nullopt, absent, 0, 0},
        {ofSize(integerValue("5"), 297), tooLarge, 297, 296},
        {ofSize(integerValue("5"), 296), none, 3, 320},
        {integerValue(321, Bytes(41, 1)), tooManyBits, 321, 320},
        {integerValue(320, Bytes(40, 1)), none, 320, 320},
        {Bytes(4, 0xFF), tooManyBits, 0x7FFFFFFF, 320},
        {integerValue(0, Bytes(20, 1)), zeroScalar, 0, 320},
        {integerValue(0x80000000, Bytes(20, 1)), zeroScalar, 0, 320},
        {integerValue(64, Bytes(8)), zeroScalar, 64, 320},
        {integerValue(64, {0, 0, 0, 0, 0, 0, 0, 1}), none, 64, 320},
        {integerValue(65, Bytes(9)), none, 65, 320},
        {integerValue(0x80000008, {5}), none, 8, 320}};
    for (const ValueCase& each : cases) {
        expectReport(recordOf(each.under(74)).privateScalarFault(), each.report(74));
    }
}

TEST(KeyFaults, OfTheScalarAreLookedForInItsValueLast) {
    const ProjectKeyRecord record = recordOf({{74, integerValue(64, Bytes(8))}});
    expectReport(record.loadingOf(74), {none, 74, 64, 320});
}

TEST(KeyFaults, OfThePublicPointAreLookedForInBothCoordinatesThenInTheirBits) {
    struct PointCase {
        AttributeValues values;
        KeyReport report;
    };
    const Bytes sound = elementValue(163, "1");
    const Bytes other = elementValue(160, "1");
    const Bytes noBitsStated = elementValue(0, "");
    const Bytes tooLong(297, 1);
    const std::vector<PointCase> cases = {
        {{}, {absent, 75, 0, 0}},
        {{{76, tooLong}}, {absent, 75, 0, 0}},
        {{{75, sound}}, {absent, 76, 0, 0}},
        {{{75, noBitsStated}}, {absent, 76, 0, 0}},
        {{{75, tooLong}, {76, elementValue(513, "1")}}, {tooLarge, 75, 297, 296}},
        {{{75, other}, {76, elementValue(513, "1")}}, {tooManyBits, 76, 513, 512}},
        {{{75, other}, {76, sound}}, {bitsDiffer, 76, 163, 160}},
        {{{75, noBitsStated}, {76, sound}}, {bitsDiffer, 76, 163, 0}},
        {{{75, noBitsStated}, {76, noBitsStated}}, {noBits, 75, 0, 0}},
        {{{75, other}, {76, other}}, {none, 0, 0, 0}}};
    for (const PointCase& each : cases) {
        expectReport(recordOf(each.values).publicPointFault(), each.report);
    }
}

TEST(KeyFaults, OfARecordThatWasNeverLoadedTellThatAllIsAbsent) {
    const ProjectKeyRecord record;
    for (const ProjectAttributeId id : {72U, 73U, 74U, 75U, 76U}) {
        expectReport(record.loadingOf(id), {absent, id, 0, 0});
    }
    expectReport(record.privateScalarFault(), {absent, 74, 0, 0});
    expectReport(record.publicPointFault(), {absent, 75, 0, 0});
}

TEST(KeyFaults, AreThoseOfTheLastLoading) {
    ProjectKeyRecord record = recordOf({{72, Bytes(297)}, {74, integerValue("5")}});
    record.loadFromAttributes(projectOf({{72, elementValue(163, "1")}}));
    expectReport(record.loadingOf(72), {none, 72, 163, 512});
    expectReport(record.privateScalarFault(), {absent, 74, 0, 0});
}

}  // namespace
