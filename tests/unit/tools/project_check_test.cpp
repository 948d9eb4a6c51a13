#include "tools/project/project_check.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/libcrypto_curve.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vector_file.h"
#include "tools/project/new_project.h"
#include "tools/project/project_writer.h"

namespace {

using Strings = std::vector<std::string>;

// The square root of b: with x = 0 it makes the point of order 2.
const std::string rootOfB = "2C25B85BADF8927593D21C366DA89C03969F34DA5";

class CheckProject : public testing::Test {
protected:
    ProjectCheck checkOf(const Bytes& bytes, mode_t mode = 0600) const {
        const std::string path = folder.write("project", bytes);
        ::chmod(path.c_str(), mode);
        return checkProject(path);
    }

    /// The code and the words of each finding.
    static Strings textsOf(const ProjectCheck& check) {
        Strings texts;
        for (const ProjectFinding& finding : check.findings) {
            texts.push_back(finding.code + ": " + finding.text);
        }
        return texts;
    }

    /// What is found once an attribute has another value.
    Strings textsWith(std::uint32_t id, const Bytes& value) const {
        AttributeValues values = attributes;
        values[id] = value;
        return textsOf(checkOf(projectBytes(values)));
    }

    /// What is found once a point has other coordinates.
    Strings textsWithPoint(std::uint32_t xId, const std::string& x, const std::string& y) const {
        AttributeValues values = attributes;
        values[xId] = elementValue(163, x);
        values[xId + 1] = elementValue(163, y);
        return textsOf(checkOf(projectBytes(values)));
    }

    const TemporaryFolder folder;
    const ProjectKey key = randomProjectKey();
    const AttributeValues attributes = keyAttributes(key);
};

TEST_F(CheckProject, FindsNothingInASoundProject) {
    const ProjectCheck check = checkOf(projectBytes(attributes));
    EXPECT_EQ(textsOf(check), Strings{});
    EXPECT_TRUE(check.isSound());
    EXPECT_FALSE(check.verifiesOnly);
}

TEST_F(CheckProject, FindsNothingInAProjectThatVerifiesOnlyAndEverybodyReads) {
    AttributeValues values = attributes;
    values.erase(74);
    const ProjectCheck check = checkOf(projectBytes(values), 0644);
    EXPECT_TRUE(check.isSound());
    EXPECT_TRUE(check.verifiesOnly);
}

TEST_F(CheckProject, CannotJudgeWhatItCannotRead) {
    const ProjectCheck check = checkProject(folder.file("missing"));
    EXPECT_EQ(check.unjudged, "cannot be opened: No such file or directory");
    EXPECT_FALSE(check.isSound());
}

TEST_F(CheckProject, FindsADamagedContainerAndNothingElse) {
    Bytes bytes = projectBytes(attributes);
    bytes.back() ^= 1;
    const ProjectCheck check = checkOf(bytes, 0666);
    EXPECT_EQ(
        textsOf(check),
        Strings{"project.digest: is damaged: the digest in its header is not that of its body"});
    EXPECT_EQ(check.unjudged, std::nullopt);
    EXPECT_FALSE(check.verifiesOnly);
}

TEST_F(CheckProject, FindsWhatIsAbsent) {
    const ProjectCheck check = checkOf(projectBytes({{1, {2}}}));
    EXPECT_EQ(textsOf(check),
              (Strings{"key.absent: attribute 72 (x of the base point) is absent",
                       "key.absent: attribute 73 (y of the base point) is absent",
                       "key.absent: attribute 75 (x of the public point) is absent",
                       "key.absent: attribute 76 (y of the public point) is absent"}));
    EXPECT_EQ(check.findings[0].attribute, 72U);
}

TEST_F(CheckProject, FindsARepeatedAttribute) {
    ProjectImage image = projectImage(attributes);
    image.directory.push_back(image.directory.front());
    for (ImageEntry& entry : image.directory) {
        entry.offset += 12;
    }
    EXPECT_EQ(
        textsOf(checkOf(image.bytes())),
        Strings{"project.repeated-attribute: attribute 72 (x of the base point) stands 2 times in "
                "the directory; only "
                "the first counts"});
    for (ImageEntry& entry : image.directory) {
        entry.id += 200;
    }
    EXPECT_EQ(
        textsOf(checkOf(image.bytes())).front(),
        "project.repeated-attribute: attribute 272 stands 2 times in the directory; only the first "
        "counts");
}

TEST_F(CheckProject, FindsWhatIsOpenToOthers) {
    const ProjectCheck check = checkOf(projectBytes(attributes), 0644);
    ASSERT_EQ(check.findings.size(), 1U);
    EXPECT_EQ(check.findings[0].code, "project.permissions");
    AttributeValues values = attributes;
    values.erase(74);
    EXPECT_EQ(checkOf(projectBytes(values), 0666).findings.size(), 1U);
}

TEST_F(CheckProject, CountsRepeatedAttributesBeyondTheFirstHundred) {
    for (const std::uint32_t repeated : {100U, 101U}) {
        ProjectImage image = projectImage(attributes);
        for (ImageEntry& entry : image.directory) {
            entry.offset += 12 * 2 * repeated;
        }
        for (std::uint32_t id = 1000 + repeated; id-- > 1000;) {
            image.directory.insert(image.directory.end(), 2, {.id = id, .offset = 0, .size = 1});
        }
        const Strings texts = textsOf(checkOf(image.bytes()));
        ASSERT_EQ(texts.size(), repeated == 100 ? 100 : 101);
        EXPECT_EQ(
            texts[0],
            "project.repeated-attribute: attribute 1000 stands 2 times in the directory; only the "
            "first counts");
        EXPECT_EQ(texts[99].substr(0, 44), "project.repeated-attribute: attribute 1099 s");
        if (repeated == 101) {
            EXPECT_EQ(
                texts[100],
                "project.repeated-attribute: 101 attributes in all stand more than once in the "
                "directory; the first 100 of them are named");
        }
    }
}

TEST_F(CheckProject, FindsAnotherDegree) {
    EXPECT_EQ(
        textsWith(72, elementValue(160, "1")),
        Strings{"key.degree: attribute 72 (x of the base point) states 160 bits instead of 163"});
}

TEST_F(CheckProject, FindsCoordinatesOfAnotherLength) {
    Bytes longer = attributes.at(75);
    longer.push_back(0);
    EXPECT_EQ(textsWith(75, longer), Strings{"key.dishonest-length: attribute 75 (x of the public "
                                             "point) has 33 bytes instead of 32"});
    // Of half a coordinate, no point is looked for.
    Bytes half = attributes.at(75);
    half.resize(20);
    EXPECT_EQ(textsWith(75, half), Strings{"key.short-coordinate: attribute 75 (x of the public "
                                           "point) has 20 bytes instead of 32"});
    AttributeValues values = keyAttributes(keyWithScalar("1", key.baseX, key.baseY));
    // The bytes that are missing at the top count as zeros.
    values[72].resize(31);
    values[75].resize(31);
    EXPECT_EQ(
        textsOf(checkOf(projectBytes(values))),
        (Strings{
            "key.short-coordinate: attribute 72 (x of the base point) has 31 bytes instead of 32",
            "key.short-coordinate: attribute 75 (x of the public point) has 31 bytes instead of "
            "32"}));
}

TEST_F(CheckProject, FindsCoordinatesWithBitsAboveTheDegree) {
    for (const unsigned bit : {3U, 7U}) {
        Bytes value = attributes.at(73);
        value[28] = static_cast<std::uint8_t>(value[28] | 1U << bit);
        EXPECT_EQ(textsWith(73, value),
                  Strings{"key.not-reduced: attribute 73 (y of the base point) "
                          "has bits at or above the degree of "
                          "the field"});
    }
    Bytes value = attributes.at(73);
    value[31] |= 0x80;
    EXPECT_EQ(textsWith(73, value).size(), 1U);
}

TEST_F(CheckProject, FindsPointsThatAreNone) {
    for (const auto& [id, name] :
         {std::pair<std::uint32_t, std::string>{72, "base"}, {75, "public"}}) {
        EXPECT_EQ(textsWithPoint(id, "0", "0"),
                  Strings{"key.infinity: the " + name +
                          " point is (0, 0), which some software writes for infinity; it is not a "
                          "point of the curve"});
        EXPECT_EQ(textsWithPoint(id, "5", "5"),
                  Strings{"key.off-curve: the " + name + " point is not on the curve"});
        EXPECT_EQ(textsWithPoint(id, "0", "1"),
                  Strings{"key.off-curve: the " + name + " point is not on the curve"});
        EXPECT_EQ(
            textsWithPoint(id, "0", rootOfB),
            Strings{"key.x-zero: the " + name + " point has x = 0: it is the point of order 2"});
    }
}

TEST_F(CheckProject, FindsPointsOfTwiceTheOrder) {
    // The sum of the point and the one of order 2.
    const CurveJudge judge;
    const AffinePoint sum = judge.add({.x = BigNumber::fromHexadecimal(key.publicX),
                                       .y = BigNumber::fromHexadecimal(key.publicY)},
                                      {.x = 0, .y = BigNumber::fromHexadecimal(rootOfB)});
    ASSERT_TRUE(judge.isOnCurve(sum));
    for (const auto& [id, name] :
         {std::pair<std::uint32_t, std::string>{72, "base"}, {75, "public"}}) {
        EXPECT_EQ(textsWithPoint(id, sum.x.toHexadecimal(), sum.y.toHexadecimal()),
                  Strings{"key.wrong-order: the " + name + " point is not of order n"});
    }
}

TEST_F(CheckProject, JudgesTheOrderOfPointsWhoseXHasAZeroTopWord) {
    for (const auto& [x, y] : {std::pair("3", "6AFC3E2D86E15C1ADA395D2A766EF112F0188AC41"),
                               {"3", "6AFC3E2D86E15C1ADA395D2A766EF112F0188AC42"},
                               {"7", "29F3CF7BFA95DEA8243DB1D3A85EAFC6DC5B40AD9"},
                               {"B", "732A9ABDC8C5AB75B719F775DA9E0B0B5CB140595"}}) {
        for (const char* scalar : {"1", "2", "40000000000000000000292FE77E70C12A4234C32"}) {
            const ProjectKey smallX = keyWithScalar(scalar, x, y);
            ASSERT_TRUE(judgeAcceptsKey(smallX));
            EXPECT_EQ(textsOf(checkOf(projectBytes(keyAttributes(smallX)))), Strings{})
                << x << " times " << scalar;
        }
    }
    // These are of order 2n.
    for (const auto& [x, y] : {std::pair("2", "1110E9D7F953FEFED52955A28AEA590397A9A6A04"),
                               {"6", "66C946230636BB36CB0944B373E3092158CBFE64B"}}) {
        EXPECT_EQ(textsWithPoint(72, x, y),
                  Strings{"key.wrong-order: the base point is not of order n"});
        EXPECT_EQ(textsWithPoint(75, x, y),
                  Strings{"key.wrong-order: the public point is not of order n"});
    }
}

TEST_F(CheckProject, FindsAPublicPointOfAnotherKey) {
    const ProjectKey other = randomProjectKey();
    AttributeValues values = attributes;
    values[75] = elementValue(163, other.publicX);
    values[76] = elementValue(163, other.publicY);
    const ProjectCheck check = checkOf(projectBytes(values));
    EXPECT_EQ(textsOf(check),
              Strings{"key.mismatch: the public point is not the product of the private scalar "
                      "and the base point"});
}

TEST_F(CheckProject, FindsThePublicPointsNegative) {
    // -P is (x, x + y).
    AttributeValues values = attributes;
    for (std::size_t i = 8; i < 32; ++i) {
        values[76][i] ^= values[75][i];
    }
    EXPECT_EQ(textsOf(checkOf(projectBytes(values))).size(), 1U);
}

TEST_F(CheckProject, FindsScalarsOutOfRange) {
    const auto withScalar = [&](const Bytes& value) { return textsWith(74, value); };
    EXPECT_EQ(withScalar(integerValue(curveOrderDigits)),
              Strings{"key.scalar-range: attribute 74 (private scalar) is not below the order"});
    EXPECT_EQ(withScalar(integerValue("1" + std::string(60, '0'))),
              Strings{"key.scalar-range: attribute 74 (private scalar) is not below the order"});
    EXPECT_EQ(withScalar(integerValue(0, {})),
              Strings{"key.zero-scalar: attribute 74 (private scalar) is zero"});
    EXPECT_EQ(withScalar(integerValue(321, Bytes(41, 1))).size(), 1U);
    EXPECT_EQ(withScalar(integerValue(0x7FFFFFFF, {1})).size(), 1U) << "its sign bit is clear";
    EXPECT_EQ(
        withScalar(integerValue(65, Bytes(9))),
        (Strings{"key.dishonest-length: attribute 74 (private scalar) states 65 bits, but has 0",
                 "key.scalar-range: attribute 74 (private scalar) is zero"}));
    EXPECT_TRUE(checkOf(projectBytes(keyAttributes(keyWithScalar(
                            "40000000000000000000292FE77E70C12A4234C32", key.baseX, key.baseY))))
                    .isSound());
    EXPECT_TRUE(
        checkOf(projectBytes(keyAttributes(keyWithScalar("1", key.baseX, key.baseY)))).isSound());
}

TEST_F(CheckProject, FindsAScalarThatIsShorterThanItsHeader) {
    for (const Bytes& value : {Bytes{0}, {0, 0, 0}, {5, 0, 0}}) {
        EXPECT_EQ(textsWith(74, value),
                  Strings{"key.zero-scalar: attribute 74 (private scalar) is zero"});
    }
}

TEST_F(CheckProject, FindsAScalarThatIsMarkedNegative) {
    Bytes value = attributes.at(74);
    value[3] |= 0x80;
    EXPECT_EQ(textsWith(74, value), Strings{"key.negative-scalar: attribute 74 (private scalar) is "
                                            "marked as negative, which the program "
                                            "ignores"});
}

TEST_F(CheckProject, FindsScalarsUnderAnotherLength) {
    const Bytes five = {5};
    const AttributeValues values = keyAttributes(keyWithScalar("5", key.baseX, key.baseY));
    const auto textsOfFive = [&](const Bytes& value) {
        AttributeValues changed = values;
        changed[74] = value;
        return textsOf(checkOf(projectBytes(changed)));
    };
    EXPECT_EQ(textsOfFive(integerValue(3, five)), Strings{});
    EXPECT_EQ(
        textsOfFive(integerValue(8, five)),
        Strings{"key.dishonest-length: attribute 74 (private scalar) states 8 bits, but has 3"});
    EXPECT_EQ(
        textsOfFive(integerValue(163, five)),
        Strings{"key.dishonest-length: attribute 74 (private scalar) states 163 bits, but has 3"});
    EXPECT_EQ(
        textsOfFive(integerValue(3, {5, 0})),
        Strings{"key.dishonest-length: attribute 74 (private scalar) has 6 bytes instead of 5"});
}

TEST_F(CheckProject, TellsWhatEachFindingMakesOfSignatures) {
    const auto damageWith = [this](std::uint32_t id, const Bytes& value) {
        AttributeValues values = attributes;
        values[id] = value;
        const ProjectCheck check = checkOf(projectBytes(values));
        EXPECT_EQ(check.findings.size(), 1U);
        return check.findings.at(0).damage;
    };
    Bytes half = attributes.at(72);
    half.resize(20);
    Bytes notReduced = attributes.at(76);
    notReduced[31] |= 0x80;
    for (const auto& [id, value] : {std::pair(72U, half),
                                    {73U, elementValue(163, "1")},
                                    {75U, elementValue(160, "1")},
                                    {76U, notReduced}}) {
        EXPECT_EQ(damageWith(id, value), KeyDamage::points) << id;
    }
    EXPECT_EQ(damageWith(74, integerValue("1234567")), KeyDamage::scalar);
    EXPECT_EQ(damageWith(74, integerValue(curveOrderDigits)), KeyDamage::scalar);
    Bytes longer = attributes.at(75);
    longer.push_back(0);
    Bytes negative = attributes.at(74);
    negative[3] |= 0x80;
    for (const auto& [id, value] :
         {std::pair(75U, longer), {74U, negative}, {74U, integerValue(0, {})}}) {
        EXPECT_EQ(damageWith(id, value), KeyDamage::none) << id;
    }
    EXPECT_EQ(checkOf(projectBytes(attributes), 0644).findings.at(0).damage, KeyDamage::none);
    EXPECT_EQ(checkOf({'V', 'L', 'T'}).findings.at(0).damage, KeyDamage::none);
}

TEST_F(CheckProject, JudgesThePublishedPublicKeysAsTheyAre) {
    int sound = 0;
    int unsound = 0;
    for (const VectorCase& vector : readVectorFile("fips186-2_PKV_B-163.rsp")) {
        ProjectKey published = keyWithBaseMultiple("1");
        published.publicX = vector.at("Qx");
        published.publicY = vector.at("Qy");
        AttributeValues values = keyAttributes(published);
        values.erase(74);
        const ProjectCheck check = checkOf(projectBytes(values));
        EXPECT_EQ(check.isSound(), vector.at("Result")[0] == 'P') << vector.at("Result");
        if (vector.at("Result").starts_with("F (1")) {
            EXPECT_EQ(textsOf(check),
                      Strings{"key.off-curve: the public point is not on the curve"});
        }
        (check.isSound() ? sound : unsound) += 1;
    }
    EXPECT_GT(sound, 0);
    EXPECT_GT(unsound, 0);
}

/// In parts that can run side by side.
class NewProjects : public CheckProject, public testing::WithParamInterface<int> {};

TEST_P(NewProjects, AreSound) {
    constexpr int projects = 250;
    int sound = 0;
    for (int i = 0; i < projects; ++i) {
        const std::string path = folder.file("new" + std::to_string(i));
        const BasePoint base = i % 10 == 0 ? BasePoint::standard : BasePoint::random;
        ASSERT_EQ(writeProjectFile(newProject(base, std::nullopt), path), std::nullopt);
        sound += checkProject(path).isSound() ? 1 : 0;
    }
    EXPECT_EQ(sound, projects);
}

INSTANTIATE_TEST_SUITE_P(Part, NewProjects, testing::Range(0, 4),
                         testing::PrintToStringParamName());

}  // namespace
