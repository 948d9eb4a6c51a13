#include <chrono>

#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/unit/engine/engine_test.h"

namespace {

/// Coordinates of the curve's degree that make no point of order n.
struct UnsoundPoint {
    const char* name;
    std::string x;
    std::string y;
};

// The square root of b: with x = 0 it makes the point of order 2.
const std::string rootOfB = "2C25B85BADF8927593D21C366DA89C03969F34DA5";

const std::string polynomial = "800000000000000000000000000000000000000C9";
const std::string allBits(48, 'F');

const std::vector<UnsoundPoint> unsoundPoints = {
    {"Zero", "0", "0"},
    {"OfOrderTwo", "0", rootOfB},
    {"XOfZero", "0", "1"},
    {"YOfZero", "1", "0"},
    {"OffTheCurve", "123456789ABCDEF", "FEDCBA987654321"},
    {"AllBits", allBits, allBits},
    {"XOfThePolynomial", polynomial, "1"},
    {"YOfThePolynomial", "1", polynomial},
    {"BothOfThePolynomial", polynomial, polynomial},
    {"XOfThePolynomialShifted", "800000000000000000000000000000000000000C90", "5"},
    {"TopBitsAlone", "FFFFFFF80000000000000000000000000000000000000000", "1"},
    {"Equal", "5", "5"},
};

class UnsoundPoints : public EngineTest, public testing::WithParamInterface<UnsoundPoint> {
protected:
    /// Runs both operations over a project and tells whether the text verifies.
    static bool runsPromptly(const std::string& path, const std::string& text) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < 3; ++i) {
            signedText(path, someData);
        }
        const bool verdict = verifies(path, someData, text);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
        return verdict;
    }

    const ProjectKey key = randomProjectKey();
    const std::string text = signatureText(judgeSign(key, someData));
    AttributeValues attributes = keyAttributes(key);
};

TEST_P(UnsoundPoints, EndPromptlyAsBasePoint) {
    attributes[72] = elementValue(163, GetParam().x);
    attributes[73] = elementValue(163, GetParam().y);
    EXPECT_FALSE(runsPromptly(project(attributes), text));
}

TEST_P(UnsoundPoints, EndPromptlyAsPublicPoint) {
    attributes[75] = elementValue(163, GetParam().x);
    attributes[76] = elementValue(163, GetParam().y);
    EXPECT_FALSE(runsPromptly(project(attributes), text));
}

TEST_P(UnsoundPoints, EndPromptlyAsBothPoints) {
    for (const std::uint32_t id : {72U, 75U}) {
        attributes[id] = elementValue(163, GetParam().x);
        attributes[id + 1] = elementValue(163, GetParam().y);
    }
    EXPECT_FALSE(runsPromptly(project(attributes), text));
}

using UnsoundSigning = EngineTest;

TEST_F(UnsoundSigning, GivesUpWhenEverySIsZero) {
    // By the curve's formulas 2 * (1, 0) = (1, 1) and 2 * (1, 1) = (1, 0): r is 1 for every nonce.
    AttributeValues attributes = keyAttributes(randomProjectKey());
    attributes[72] = elementValue(163, "1");
    attributes[73] = elementValue(163, "0");
    const std::string path = project(attributes);
    for (int round = 0; round < 50; ++round) {
        ASSERT_EQ(readSignatureText(signedText(path, someData)).r, "01");
    }
    attributes[74] = integerValue(scalarOfZeroS(someData, "1"));
    EXPECT_EQ(signedText(project(attributes), someData), "");
}

INSTANTIATE_TEST_SUITE_P(Coordinates, UnsoundPoints, testing::ValuesIn(unsoundPoints),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
