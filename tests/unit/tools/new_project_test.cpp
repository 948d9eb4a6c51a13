#include <gtest/gtest.h>

#include <set>
#include <string>

#include "core/entry.h"
#include "random/random_generator.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/signature_vectors.h"
#include "tools/project_writer.h"

namespace {

class NewProject : public testing::Test {
protected:
    NewProject() { coreEntry::coreStart(); }
    ~NewProject() override { coreEntry::coreStop(); }

    static AttributeValues made() {
        const ProjectFile project = newProject();
        return {project.attributes.begin(), project.attributes.end()};
    }
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

}  // namespace
