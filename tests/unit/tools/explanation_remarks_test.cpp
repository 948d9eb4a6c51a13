#include "tests/support/project_key.h"
#include "tests/support/signature_text.h"
#include "tests/unit/tools/explanation_test.h"

namespace {

using Remarks = std::vector<std::string>;

/// Remarks on what goes to the engine.
class ExplanationRemarks : public ExplanationTest {
protected:
    std::string verifying(const std::string& input, const std::string& signature) const {
        return "sig_verify=true&project=" + project + input + "&sig=" + signature;
    }
    std::string signing(const std::string& input) const {
        return "sig_create=true&project=" + project + input;
    }
};

}  // namespace

TEST_F(ExplanationRemarks, TellOfTheByteThatBase64Adds) {
    const Remarks added = {
        "base64 data of more than four characters decode with one zero byte in front of their last "
        "group, and the signature is over that byte too"};
    const std::string start = "&sig_data_encoding=base64&sig_data=";
    EXPECT_EQ(explainForm(signing(start + "QUJDREVG")).remarks, added);
    EXPECT_EQ(explainForm(verifying(start + "QUJDREVG", "AAAA")).remarks, added);
    EXPECT_EQ(explainForm(signing(start + "QUJD")).remarks, Remarks());
    EXPECT_EQ(explainForm(signing("&sig_data=QUJDREVG")).remarks, Remarks());
}

TEST_F(ExplanationRemarks, TellThatAFileIsNotDecoded) {
    EXPECT_EQ(explainForm(signing("&sig_data_encoding=base64&sig_file=" + message)).remarks,
              Remarks{"the content of a file counts as it stands, whatever 'sig_data_encoding' "
                      "says"});
}

TEST_F(ExplanationRemarks, TellOfTextsThatEndAtAZeroByte) {
    EXPECT_EQ(explainForm("sig_create=true&sig_data=a%00b&project=" + project + "%00x").remarks,
              Remarks{"'project' ends at its zero byte, and counts as \"" + project + "\""});
    EXPECT_EQ(explainForm(signing("&sig_file=" + message + "%00")).remarks,
              Remarks{"'sig_file' ends at its zero byte, and counts as \"" + message + "\""});
    const Explanation explanation =
        explainForm(verifying("&sig_file=" + message, inForm(known.text) + "%00abc"));
    EXPECT_EQ(explanation.rule, "signature.valid");
    EXPECT_EQ(explanation.remarks,
              Remarks{"'sig' ends at its zero byte, and counts as \"" + known.text + "\""});
    EXPECT_EQ(explainForm(verifying("&sig_file=" + message, "%00")).reason,
              "the signature is empty");
}

TEST_F(ExplanationRemarks, TellOfAFileThatCountsInPart) {
    const std::string path = write("large", bytesOf("abcde"));
    std::filesystem::resize_file(path, (std::uintmax_t{1} << 32) + 5);
    EXPECT_EQ(explainForm(signing("&sig_file=" + path)).remarks,
              Remarks{"the file \"" + path + "\": only the first 5 bytes of 4294967301 count"});
    std::filesystem::resize_file(path, std::uintmax_t{3} << 31);
    EXPECT_EQ(explainForm(signing("&sig_file=" + path)).remarks, Remarks());
}

TEST_F(ExplanationRemarks, TellOfAProjectThatOthersCanReadWithItsScalar) {
    using std::filesystem::perms;
    const std::string open = "sig_create=true&sig_data=a&project=" + project;
    std::filesystem::permissions(project, perms::others_read, std::filesystem::perm_options::add);
    EXPECT_EQ(
        explainForm(open).remarks,
        Remarks{"the project \"" + project +
                "\": holds a private scalar and is open to users other than its owner: mode 0604; "
                "chmod it to 600, or to 640 if root owns it"});
    AttributeValues verifier = readProjectBytes(fileBytes(known.project));
    verifier.erase(74);
    const std::string path = write("verifier", projectBytes(verifier));
    std::filesystem::permissions(path, perms::others_read, std::filesystem::perm_options::add);
    EXPECT_EQ(explainForm("sig_create=true&sig_data=a&project=" + path).remarks, Remarks());
    const std::string damaged = write("damaged", bytesOf("no project"));
    std::filesystem::permissions(damaged, perms::others_write, std::filesystem::perm_options::add);
    EXPECT_EQ(explainForm("sig_create=true&sig_data=a&project=" + damaged).remarks, Remarks());
}

TEST_F(ExplanationRemarks, TellOfAnUnsoundKeyThatSigns) {
    AttributeValues values = keyAttributes(randomProjectKey());
    values[74] = integerValue("1234567");
    const std::string path = write("unsound", projectBytes(values));
    const std::string body = "sig_create=true&sig_data=a&project=" + path;
    EXPECT_EQ(explainForm(body).rule, "signature.made");
    EXPECT_EQ(explainForm(body).remarks,
              Remarks{"signatures under the key of the project \"" + path +
                      "\" cannot be relied on: the public point is not the product of the private "
                      "scalar and the base point"});
    // The reason tells of a key that does not sign.
    values.erase(74);
    write("unsound", projectBytes(values));
    EXPECT_EQ(explainForm(body).remarks, Remarks());
}

TEST_F(ExplanationRemarks, TellOfTheNameInFrontOfASignature) {
    const Explanation explanation =
        explainForm(verifying("&sig_file=" + message, "signature:" + inForm(known.text)));
    EXPECT_EQ(explanation.body, "false");
    EXPECT_EQ(explanation.remarks.front(),
              "the signature begins with \"signature:\", which is the name in front of it and no "
              "part of it");
}

TEST_F(ExplanationRemarks, TellOfCharactersThatCountAsA) {
    const std::string start(52, 'b');
    const auto named = [](const std::string& what) { return "character 5" + what; };
    EXPECT_EQ(explainForm(verifying("&sig_data=a", start + "b-_=")).remarks,
              (Remarks{named("4 of the signature is \"-\", which base64 for URLs has instead of "
                             "\"+\""),
                       "2 characters of the signature are outside its alphabet, read as \"A\""}));
    EXPECT_EQ(explainForm(verifying("&sig_data=a", start + "%20bbb")).remarks,
              (Remarks{named("3 of the signature is a space, which a \"+\" becomes in a URL or a "
                             "form: write it as \"%2B\" there"),
                       "1 character of the signature is outside its alphabet, read as \"A\""}));
    EXPECT_EQ(explainForm(verifying("&sig_data=a", start + "A%2B/=")).remarks, Remarks());
    // What is not decoded counts as nothing.
    EXPECT_EQ(explainForm(verifying("&sig_data=a", "AAAA%0A")).remarks,
              Remarks{named(" of the signature is a line feed, which is not part of it")});
}

TEST_F(ExplanationRemarks, LeaveASmallRToTheReason) {
    for (const std::size_t bytes : {16U, 17U}) {
        const ArrangedKey arranged = arrangeSignature(known.message, "1234567", bytes, "765432100");
        ASSERT_TRUE(judgeAccepts(arranged.key, known.message, arranged.signature));
        const std::string path = write("arranged", projectBytes(keyAttributes(arranged.key)));
        const RawRequest request =
            json(R"({"mode":"verifySignature","project":")" + path + R"(","signature":{"file":")" +
                 message + R"(","signature":")" + signatureText(arranged.signature) + "\"}}");
        const Explanation explanation = explainRequest(request);
        EXPECT_EQ(explanation.rule, bytes == 16 ? "signature.mismatch" : "signature.valid");
        EXPECT_EQ(explanation.reason.find("its r is below 2^128") != std::string::npos,
                  bytes == 16);
        EXPECT_EQ(explanation.remarks, Remarks());
    }
}
