#include "tests/unit/tools/explanation_test.h"

namespace {

class ExplainBase64 : public ExplanationTest {
protected:
    /// The rule and the reason of data that is refused as no base64, in a request to sign and in
    /// one to verify.
    std::string refusalOf(const std::string& data) const {
        const Explanation signing = explainForm(requestFor(data) + "&sig_create=true");
        const Explanation verifying = explainForm(requestFor(data) + "&sig_verify=true&sig=x");
        EXPECT_EQ(signing.status, "400 Bad Request");
        EXPECT_EQ(signing.body, "Invalid base64 data");
        EXPECT_EQ(reasonOf(verifying), reasonOf(signing));
        return reasonOf(signing);
    }
    std::string requestFor(const std::string& data) const {
        return "project=" + project + "&sig_data_encoding=base64&sig_data=" + data;
    }
};

}  // namespace

TEST_F(ExplainBase64, TellsGroupsThatAreIncomplete) {
    EXPECT_EQ(refusalOf("QUJDRA"),
              "base64.length: the base64 data are not whole groups of four, but 6 characters");
    EXPECT_EQ(refusalOf("Q"),
              "base64.length: the base64 data are not whole groups of four, but 1 character");
}

TEST_F(ExplainBase64, TellsWhichCharacterIsNone) {
    EXPECT_EQ(refusalOf("QUJ-QUJD"),
              "base64.character: \"-\", character 4 of the base64 data, is outside the alphabet of "
              "RFC 4648");
    EXPECT_EQ(refusalOf("QUJDQU%0AD"),
              "base64.character: \"\\x0A\", character 7 of the base64 data, is outside the "
              "alphabet of RFC 4648");
    EXPECT_EQ(refusalOf("%C3UJD").substr(0, 30), "base64.character: \"\\xC3\", char");
}

TEST_F(ExplainBase64, TellsPaddingThatIsNotAtTheEnd) {
    EXPECT_EQ(
        refusalOf("QUI=QUJD"),
        "base64.padding: \"=\", character 4 of the base64 data, stands before the last group");
    EXPECT_EQ(refusalOf("QUJDQ==D"),
              "base64.padding: \"D\", character 8 of the base64 data, follows a \"=\"");
}
