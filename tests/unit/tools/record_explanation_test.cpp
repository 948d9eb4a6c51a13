#include <csignal>

#include "tests/support/messages.h"
#include "tests/unit/tools/explanation_test.h"
#include "tools/exit_status.h"
#include "tools/files/cut_file.h"

namespace {

class ExplainRecord : public ExplanationTest {
protected:
    /// The rule and the reason of a refusal with this message.
    static std::string refusalOf(const Explanation& explanation, const std::string& message) {
        EXPECT_EQ(explanation.status, "400 Bad Request");
        EXPECT_EQ(explanation.body, message);
        return reasonOf(explanation);
    }

    std::string signingForm() const { return "sig_create=true&project=" + project; }
    std::string verifyingForm() const { return "sig_verify=true&project=" + project; }
};

}  // namespace

TEST_F(ExplainRecord, TellsThatNoProjectIsNamed) {
    for (const char* body : {"sig_create=true", "sig_verify=true&project="}) {
        EXPECT_EQ(refusalOf(explainForm(body), projectRequired),
                  "request.project: 'project' is absent or empty");
    }
    EXPECT_EQ(refusalOf(explainJson(R"({"mode":"verifySignature"})"), projectRequired),
              "request.project: 'project' is absent or empty");
}

TEST_F(ExplainRecord, TellsThatVerifyingNeedsASignatureBeforeAllElse) {
    for (const char* more : {"", "&sig_data=a", "&sig=", "&sig_data=a&sig_data_encoding=json"}) {
        EXPECT_EQ(refusalOf(explainForm(verifyingForm() + more), signatureRequired),
                  "request.no-signature: 'sig' is absent or empty, and verifying needs it");
    }
    EXPECT_EQ(
        refusalOf(explainJson(R"({"mode":"verifySignature","project":"p"})"), signatureRequired),
        "request.no-signature: 'signature.signature' is absent or empty, and verifying needs "
        "it");
}

TEST_F(ExplainRecord, TellsThatThereIsNeitherDataNorFile) {
    for (const std::string& body : {signingForm(), signingForm() + "&sig_data=&sig_file=",
                                    verifyingForm() + "&sig=x&sig_data_encoding=json"}) {
        EXPECT_EQ(refusalOf(explainForm(body), dataOrFile),
                  "request.no-input: 'sig_data' and 'sig_file' are both absent or empty");
    }
}

TEST_F(ExplainRecord, RemarksOnNothingThatTheEngineIsNotAskedAbout) {
    EXPECT_TRUE(explainForm(signingForm() + "%00").remarks.empty());
}

TEST_F(ExplainRecord, TellsThatThereAreDataAndFile) {
    for (const std::string& body : {signingForm(), verifyingForm() + "&sig=x"}) {
        EXPECT_EQ(refusalOf(explainForm(body + "&sig_data=a&sig_file=b"), dataOrFile),
                  "request.two-inputs: 'sig_data' and 'sig_file' are both given, and only one may "
                  "be");
    }
}

TEST_F(ExplainRecord, TellsAWritingOfTheDataThatIsNotAllowed) {
    for (const char* word : {"json", "urlencode"}) {
        const std::string more = "&sig_data_encoding=" + std::string(word);
        const std::string reason = "request.data-encoding: 'sig_data_encoding' is \"" +
                                   std::string(word) +
                                   "\"; data are written as \"plain\" or \"base64\"";
        EXPECT_EQ(refusalOf(explainForm(signingForm() + "&sig_data=a" + more), wrongEncoding),
                  reason);
        EXPECT_EQ(
            refusalOf(explainForm(verifyingForm() + "&sig=x&sig_file=a" + more), wrongEncoding),
            reason + ", and this holds for a request with a file too");
    }
    EXPECT_EQ(refusalOf(explainJson(R"({"mode":"generateSignature","project":"p","signature":)"
                                    R"({"data":"a","encoding":"json"}})"),
                        wrongEncoding),
              "request.data-encoding: 'signature.encoding' is \"json\"; data are written as "
              "\"plain\" or \"base64\"");
}

TEST_F(ExplainRecord, TellsAnOperationThatTheProgramDoesNotHave) {
    RequestRecord record;
    record.mode = static_cast<RequestMode>(7);
    record.project = project;
    const Explanation explanation = explainRecord(record, {});
    EXPECT_EQ(reasonOf(explanation),
              "request.mode-unknown: the record asks for an operation that the program does not "
              "have");
    EXPECT_EQ(explanation.status, "500 Server Error");
    EXPECT_EQ(explanation.body, "Invalid mode");
}

TEST_F(ExplainRecord, NamesTheFileShouldItBeCutMeanwhile) {
    RequestRecord record;
    record.signatureFile = message + std::string(1, '\0') + "x";
    EXPECT_EXIT(
        {
            reportCutFile();
            explainRecord(record, {});
            std::raise(SIGBUS);
        },
        testing::ExitedWithCode(exitFailed),
        testing::Eq("projectctl: " + message + ": was cut while it was read\n"));
}

TEST_F(ExplainRecord, RemarksOnWordsThatAreNotKnown) {
    const std::string signing = signingForm() + "&sig_data=a";
    EXPECT_EQ(
        explainForm(signing + "&encoding=xml&sig_data_encoding=Base64").remarks,
        (std::vector<std::string>{
            "'encoding' is \"xml\", which is not a known word: the default applies, "
            "\"urlencode\"",
            "'sig_data_encoding' is \"Base64\", which is not a known word: the default applies, "
            "\"plain\""}));
    EXPECT_TRUE(explainForm(signing + "&encoding=&sig_data_encoding=base6").remarks.size() == 1);
    // Without an operation or a project no default is reached.
    for (const char* start : {"", "sig_create=true&"}) {
        EXPECT_TRUE(explainForm(std::string(start) + "encoding=xml").remarks.empty());
    }
    const std::string start = R"({"mode":"generateSignature","project":")" + project;
    EXPECT_EQ(
        explainJson(start + R"(","encoding":"x","signature":{"data":"a","encoding":"y"}})").remarks,
        (std::vector<std::string>{
            "'encoding' is \"x\", which is not a known word: the default applies, \"json\"",
            "'signature.encoding' is \"y\", which is not a known word: the default applies, "
            "\"plain\""}));
}
