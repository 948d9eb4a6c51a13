#include "curve/entry.h"

#include <gtest/gtest.h>

#include "tests/support/curve_keys.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"

namespace {

using CurveEntry = LeakCheckedTest;

TEST_F(CurveEntry, LoadsAndCopiesElements) {
    const BigNumber value = randomPolynomial(163);
    core::FieldElement loaded{.degree = 0, .capacity = 64, .words = {}};
    coreEntry::fieldLoad(elementValue(163, value.toHexadecimal()).data(), loaded);
    EXPECT_EQ(loaded.degree, 163U);
    EXPECT_EQ(contentOf(loaded), value);
    core::FieldElement copy{.degree = 0, .capacity = 112, .words = {}};
    EXPECT_EQ(coreEntry::fieldCopy(loaded, copy), 1);
    EXPECT_EQ(copy.degree, 163U);
    EXPECT_EQ(contentOf(copy), value);
}

TEST_F(CurveEntry, SignsAndVerifies) {
    const ProjectKey key = randomProjectKey();
    const KeyRecords records(key);
    const BigNumber nonce = CurveJudge().randomScalar();
    Bytes data = randomBytes(100);
    core::CoreInteger r = signatureHalf();
    core::CoreInteger s = signatureHalf();
    testHostPlayRandom(nonceDraw(nonce));
    coreEntry::curveSign(records.domain(), records.scalar(), data.data(), data.size(),
                         {.r = r, .s = s});
    const SignatureNumbers signature{.r = BigNumber::fromInteger(r).toHexadecimal(),
                                     .s = BigNumber::fromInteger(s).toHexadecimal()};
    EXPECT_EQ(signature, signWithNonce(key, nonce.toHexadecimal(), data));
    const auto verify = [&] {
        return coreEntry::curveVerify(records.domain(), records.publicPoint(), data.data(),
                                      data.size(), {.r = r, .s = s});
    };
    EXPECT_EQ(verify(), 1);
    data.back() ^= 1;
    EXPECT_EQ(verify(), 0);
}

}  // namespace
