#include "tests/support/failing_calls.h"
#include "tests/support/messages.h"
#include "tests/unit/tools/explanation_test.h"

namespace {

using Remarks = std::vector<std::string>;

class ExplainForm : public ExplanationTest {
protected:
    static Explanation explainLength(const std::optional<std::string>& length,
                                     const std::string& body = "a=1") {
        return explainRequest({std::nullopt, length, body});
    }

    /// The rule and the reason of a length that brings no form, about which there is no more to
    /// say.
    static std::string refusalOf(const std::optional<std::string>& length,
                                 const std::string& body = "a=1") {
        const Explanation explanation = explainLength(length, body);
        EXPECT_EQ(explanation.status, "400 Bad Request");
        EXPECT_EQ(explanation.body, noForm);
        EXPECT_EQ(explanation.remarks, Remarks());
        return reasonOf(explanation);
    }

    /// The remarks on a form that selects nothing.
    static std::vector<std::string> remarksOn(const std::string& body) {
        return explainForm(body).remarks;
    }
};

}  // namespace

TEST_F(ExplainForm, TellsThatTheLengthIsUnset) {
    EXPECT_EQ(refusalOf(std::nullopt),
              "form.length-unset: CONTENT_LENGTH is not set, so there is no body");
}

TEST_F(ExplainForm, TellsALengthOfZeroAndOneThatIsNoNumber) {
    for (const char* length : {"0", "-0", "abc", "", "  x5"}) {
        EXPECT_EQ(refusalOf(length), "form.length-zero: CONTENT_LENGTH is \"" +
                                         std::string(length) +
                                         "\": the number at its start is 0 or missing, so "
                                         "there is no body");
    }
}

TEST_F(ExplainForm, TellsALengthBeyondAllNumbers) {
    for (const char* length :
         {"-1", "18446744073709551615", "18446744073709551616", "-18446744073709551616"}) {
        EXPECT_EQ(refusalOf(length),
                  "form.length-range: CONTENT_LENGTH is \"" + std::string(length) +
                      "\", which counts as 2^64 - 1 and means that there is no body");
    }
}

TEST_F(ExplainForm, TellsABodyThatDoesNotArrive) {
    EXPECT_EQ(refusalOf("12", ""),
              "form.body-empty: CONTENT_LENGTH is \"12\", but nothing arrives: the body is empty");
}

TEST_F(ExplainForm, TellsTheLengthsThatEndTheProgram) {
    for (const char* length : {"-2", "-5", "9223372036854775807", "9223372036854775808",
                               "18446744073709551614", "-9223372036854775809"}) {
        const Explanation explanation = explainLength(length);
        EXPECT_EQ(explanation.status, "");
        EXPECT_EQ(explanation.body, "");
        EXPECT_EQ(reasonOf(explanation), "form.length-impossible: CONTENT_LENGTH is \"" +
                                             std::string(length) +
                                             "\", which counts as 2^63 - 1 bytes or more: the "
                                             "program ends by SIGABRT without a response");
    }
}

TEST_F(ExplainForm, TellsALengthThatThereIsNoMemoryFor) {
    const Explanation explanation = explainLength("9223372036854775806");
    EXPECT_EQ(explanation.status, "");
    EXPECT_EQ(reasonOf(explanation),
              "form.length-memory: CONTENT_LENGTH is \"9223372036854775806\", and there is no "
              "memory for such a body: the program ends by SIGABRT without a response");
}

TEST_F(ExplainForm, TellsThatThereIsNoMemoryToReadTheBody) {
    ScopedFailingCalls calls;
    calls.failingStreamCall = 1;
    EXPECT_EQ(explainForm("a=1").rule, "form.length-memory");
}

TEST_F(ExplainForm, RemarksOnLengthsThatAreNotTheBodys) {
    EXPECT_EQ(explainLength("9", "a=1").remarks,
              (Remarks{"the body ends after 3 of the 9 bytes announced, which a form allows",
                       "unknown parameters are ignored: \"a\""}));
    EXPECT_EQ(explainLength("3", "a=1&b=2").remarks,
              (Remarks{"CONTENT_LENGTH announces 3 of the body's 7 bytes: the rest is not read",
                       "unknown parameters are ignored: \"a\""}));
    EXPECT_EQ(explainLength("3x", "a=1").remarks.front(),
              "CONTENT_LENGTH is \"3x\" and counts as 3");
}

TEST_F(ExplainForm, RemarksOnAZeroByteInTheBody) {
    using namespace std::string_literals;
    EXPECT_EQ(remarksOn("a&b\0project=x"s),
              Remarks{"byte 4 of the body is a zero byte, so the form ends before it"});
    // The zero bytes of a short body are none of its own.
    EXPECT_EQ(explainLength("9", "abc").remarks.size(), 1U);
}

TEST_F(ExplainForm, RemarksOnJsonThatIsReadAsAForm) {
    EXPECT_EQ(explainRequest(requestOf("application/json; charset=utf-8", "{}")).remarks,
              Remarks{"CONTENT_TYPE is \"application/json; charset=utf-8\": only exactly "
                      "\"application/json\" is JSON, and this is read as a form"});
    const Remarks remarks = {
        "the body looks like JSON, but is read as a form: for JSON, CONTENT_TYPE must be exactly "
        "\"application/json\""};
    for (const std::optional<std::string>& type :
         {std::optional<std::string>(), {"application/jso"}}) {
        EXPECT_EQ(explainRequest({type, "2", "{}"}).remarks, remarks);
    }
    EXPECT_EQ(explainRequest({std::nullopt, std::nullopt, "{}"}).remarks, remarks) << "no length";
}

TEST_F(ExplainForm, RemarksOnParametersThatDoNotCountAsOneMayThink) {
    EXPECT_EQ(remarksOn("sig_create&sig%5fverify"),
              (Remarks{"'sig_create' has no \"=\" and counts as absent",
                       "'sig_verify' has no \"=\" and counts as absent"}));
    EXPECT_EQ(remarksOn("project=a&project=b"),
              Remarks{"'project' is given 2 times, and the last one counts"});
    EXPECT_EQ(remarksOn("project=a&project=b&%70roject=c"),
              Remarks{"'project' is given 3 times, and the last one counts"});
    EXPECT_EQ(remarksOn("Project=a"), Remarks{"unknown parameters are ignored: \"Project\""});
    EXPECT_EQ(remarksOn("data=a&=b&c"), Remarks{"unknown parameters are ignored: \"data\", \"\""});
    EXPECT_EQ(remarksOn("a=&b=&c=&d=&e="),
              Remarks{"unknown parameters are ignored: \"a\", \"b\", \"c\" and 2 more"});
}

TEST_F(ExplainForm, RemarksOncePerNameAndKind) {
    std::string text;
    for (const char* digit : {"a", "b", "c"}) {
        text += std::string("sig&sig=+%z") + digit + "&sig_file&";
    }
    EXPECT_EQ(remarksOn(text),
              (Remarks{"'sig' has no \"=\" and counts as absent",
                       "\"%za\" in 'sig' is not a \"%\" with two hexadecimal digits, so it stands "
                       "for the byte \"\\x00\"",
                       "\"+\" in 'sig' stands for a space; a plus sign is written \"%2B\"",
                       "'sig_file' has no \"=\" and counts as absent",
                       "'sig' is given 3 times, and the last one counts"}));
}

TEST_F(ExplainForm, RemarksOnPairsThatAreOnAgainstTheirLook) {
    for (const std::string word : {"", "0", "no", "off", "False", "FALSE"}) {
        EXPECT_EQ(
            explainForm("genpairs=" + word).remarks,
            Remarks{
                "'genpairs' is \"" + word +
                "\", which turns it on: only exactly \"false\" and leaving it out turn it off"});
    }
    for (const std::string body : {"genpairs=false", "genpairs=true", "genpairs=1", "sig=a"}) {
        EXPECT_EQ(explainForm(body).remarks, Remarks());
    }
}

TEST_F(ExplainForm, RemarksOnEscapesThatAreNone) {
    EXPECT_EQ(remarksOn("sig_data=%41%zz"),
              Remarks{"\"%zz\" in 'sig_data' is not a \"%\" with two hexadecimal digits, so it "
                      "stands for the byte \"\\x00\""});
    EXPECT_EQ(remarksOn("sig_file=a%4&encoding=plain"),
              Remarks{"\"%4\" in 'sig_file' is not a \"%\" with two hexadecimal digits, so it "
                      "stands for the byte \"\\x04\""});
    EXPECT_EQ(remarksOn("sig_file=%&encoding=plain"),
              Remarks{"\"%\" in 'sig_file' is not a \"%\" with two hexadecimal digits, so it "
                      "stands for the byte \"\\x00\""});
    EXPECT_EQ(remarksOn("sig_file=%e4%F6&encoding=plain"), Remarks());
}

TEST_F(ExplainForm, RemarksOnAPlusSignThatIsASpace) {
    EXPECT_EQ(remarksOn("sig=a+b"),
              Remarks{"\"+\" in 'sig' stands for a space; a plus sign is written \"%2B\""});
    EXPECT_EQ(remarksOn("sig_data=a+b&sig_data_encoding=base64"),
              Remarks{"\"+\" in 'sig_data' stands for a space; a plus sign is written \"%2B\""});
    EXPECT_EQ(remarksOn("sig_data=a+b&sig_file=a+b"), Remarks());
}

TEST_F(ExplainForm, TellsWhyNoOperationIsSelected) {
    const auto reasonFor = [](const std::string& body) {
        const Explanation explanation = explainForm(body);
        EXPECT_EQ(explanation.status, "400 Bad Request");
        EXPECT_EQ(explanation.body, "'mode' parameter missing or invalid");
        return reasonOf(explanation);
    };
    EXPECT_EQ(reasonFor("abc"),
              "request.mode: the form holds no parameter, and so neither 'sig_create' nor "
              "'sig_verify'");
    EXPECT_EQ(reasonFor("project=x"),
              "request.mode: neither 'sig_create' nor 'sig_verify' is given");
    EXPECT_EQ(reasonFor("sig_create=True"),
              "request.mode: 'sig_create' is \"True\"; only exactly \"true\" selects it");
    EXPECT_EQ(reasonFor("sig_verify=1&sig_create="),
              "request.mode: 'sig_create' is \"\", 'sig_verify' is \"1\"; only exactly \"true\" "
              "selects it");
}

TEST_F(ExplainForm, RemarksThatVerifyingWins) {
    const Explanation explanation = explainForm("sig_create=true&sig_verify=true&project=x");
    EXPECT_EQ(explanation.rule, "request.no-signature");
    EXPECT_EQ(explanation.remarks,
              Remarks{"'sig_create' and 'sig_verify' are both \"true\", and verifying wins"});
    EXPECT_EQ(explainForm("sig_create=true&sig_verify=false&project=x").remarks, Remarks());
}
