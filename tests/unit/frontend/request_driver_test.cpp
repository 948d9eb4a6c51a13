#include "frontend/request_driver.h"

#include "frontend/request_rules.h"
#include "tests/support/messages.h"
#include "tests/support/signature_judge.h"
#include "tests/unit/frontend/engine_test.h"
#include "tools/request/raw_request.h"

namespace {

using namespace std::string_literals;

Answer serve(const RawRequest& request) {
    RequestRun run;
    return answerOf(answerRequest(RawRequestSource(request), run));
}

Answer serve(std::optional<std::string> type, const std::string& body) {
    return serve({std::move(type), std::to_string(body.size()), body});
}

Answer serveForm(const std::string& body) {
    return serve("application/x-www-form-urlencoded", body);
}

Answer serveJson(const std::string& body) {
    return serve("application/json", body);
}

class AnswerRequest : public KnownRequest {
protected:
    /// Form and JSON bodies that sign "abc"; `more` follows the parameters, or the members.
    std::string form(const std::string& more) const {
        return "sig_create=true&sig_data=abc&project=" + known.project + more;
    }
    std::string json(const std::string& more, const std::string& moreOfSignature = "") const {
        return R"({"mode":"generateSignature","project":")" + known.project +
               R"(","signature":{"data":"abc")" + moreOfSignature + "}" + more + "}";
    }

    /// Whether the answer is a signature of "abc" between the two texts, with this content type.
    bool answersSignature(const Answer& answer, const std::string& contentType,
                          const std::string& before, const std::string& after) const {
        const std::string body = responseBody(answer.output);
        if (answer.status != 0 || !body.starts_with(before) || !body.ends_with(after) ||
            answer.output != expectedResponse(FirstLine::forServer, "200 OK", contentType, body)) {
            return false;
        }
        const std::size_t length = body.size() - before.size() - after.size();
        return judgeAcceptsText(known.project, "abc", body.substr(before.size(), length));
    }
    bool answersText(const Answer& answer) const {
        return answersSignature(answer, "text/plain", "", "");
    }
    bool answersJson(const Answer& answer) const {
        return answersSignature(answer, "application/json", "{\"signature\":\"", "\"}");
    }
};

class DispatchRequest : public KnownRequest {};

}  // namespace

TEST_F(AnswerRequest, AnswersAFormInTextAndJsonInJson) {
    EXPECT_TRUE(answersText(serveForm(form(""))));
    EXPECT_TRUE(answersJson(serveJson(json(""))));
}

TEST_F(AnswerRequest, AnswersAsTheEncodingAsksWhateverTheInput) {
    EXPECT_TRUE(answersJson(serveForm(form("&encoding=json"))));
    for (const char* word : {"plain", "base64", "urlencode"}) {
        EXPECT_TRUE(answersText(serveForm(form("&encoding="s + word))));
        EXPECT_TRUE(answersText(serveJson(json(",\"encoding\":\""s + word + "\"")))) << word;
    }
    EXPECT_TRUE(answersJson(serveJson(json(",\"encoding\":\"json\""))));
}

TEST_F(AnswerRequest, TakesTheInputsDefaultForAnUnknownEncoding) {
    for (const char* word : {"JSON", "Plain", "xml", ""}) {
        EXPECT_TRUE(answersText(serveForm(form("&encoding="s + word)))) << word;
        EXPECT_TRUE(answersJson(serveJson(json(",\"encoding\":\""s + word + "\"")))) << word;
    }
}

TEST_F(AnswerRequest, TakesAnUnknownEncodingOfTheDataForPlain) {
    for (const char* word : {"BASE64", "hex", ""}) {
        EXPECT_TRUE(answersText(serveForm(form("&sig_data_encoding="s + word)))) << word;
        EXPECT_TRUE(answersJson(serveJson(json("", ",\"encoding\":\""s + word + "\"")))) << word;
    }
}

TEST_F(AnswerRequest, LeavesAKnownButWrongEncodingOfTheDataToTheHandler) {
    for (const char* word : {"urlencode", "json"}) {
        EXPECT_EQ(serveForm(form("&sig_data_encoding="s + word)), refusal(wrongEncoding));
        EXPECT_EQ(serveJson(json("", ",\"encoding\":\""s + word + "\"")), refusal(wrongEncoding));
    }
}

TEST_F(AnswerRequest, CarriesPairsIntoTextAlone) {
    EXPECT_TRUE(answersSignature(serveForm(form("&genpairs=")), "text/plain", "signature:", ""));
    EXPECT_TRUE(answersText(serveForm(form("&genpairs=false"))));
    EXPECT_TRUE(answersText(serveForm(form("&genpairs"))));
    EXPECT_TRUE(answersJson(serveJson(json(",\"genPairs\":true"))));
}

TEST_F(AnswerRequest, TakesOnlyTheExactTypeForJson) {
    for (const char* type :
         {"application/json; charset=utf-8", "application/json;", "Application/JSON", "text/json",
          " application/json", "application/json ", ""}) {
        EXPECT_TRUE(answersText(serve(type, form("")))) << type;
        EXPECT_EQ(serve(type, json("")), refusal(modeMissing)) << type;
    }
    EXPECT_TRUE(answersText(serve(std::nullopt, form(""))));
    EXPECT_EQ(serveJson(form("")), refusal(noJson));
}

TEST_F(AnswerRequest, RefusesUnusableInputInItsOwnWords) {
    EXPECT_EQ(serveForm(""), refusal(noForm));
    EXPECT_EQ(serveJson(""), refusal(noJson));
    EXPECT_EQ(serveJson("{"), refusal(noJson));
    for (const char* length : {"0", "abc", ""}) {
        EXPECT_EQ(serve({std::nullopt, length, "a=1"}), refusal(noForm));
        EXPECT_EQ(serve({"application/json", length, "{}"}), refusal(noJson));
    }
}

TEST_F(AnswerRequest, ReadsATrailingLetterInTheLengthAsTheInputDoes) {
    const std::string formLength = std::to_string(form("").size()) + "x";
    const std::string jsonLength = std::to_string(json("").size()) + "x";
    EXPECT_TRUE(answersText(serve({std::nullopt, formLength, form("")})));
    EXPECT_EQ(serve({"application/json", jsonLength, json("")}), refusal(noJson));
}

TEST_F(AnswerRequest, MissesTheModeBeforeTheProject) {
    EXPECT_EQ(serveForm("a=1"), refusal(modeMissing));
    EXPECT_EQ(serveJson("{}"), refusal(modeMissing));
    EXPECT_EQ(serveForm("project=p"), refusal(modeMissing));
    EXPECT_EQ(serveJson(R"({"project":"p","mode":"sign"})"), refusal(modeMissing));
    EXPECT_EQ(serveForm("project=p&sig_create=1&sig_verify=TRUE"), refusal(modeMissing));
}

TEST_F(AnswerRequest, MissesTheProjectBeforeAnythingOfTheSignature) {
    EXPECT_EQ(serveForm("sig_create=true"), refusal(projectRequired));
    EXPECT_EQ(serveForm("sig_verify=true&project="), refusal(projectRequired));
    EXPECT_EQ(serveForm("sig_create=true&sig_data_encoding=json"), refusal(projectRequired));
    EXPECT_EQ(serveJson(R"({"mode":"verifySignature","project":""})"), refusal(projectRequired));
}

TEST_F(AnswerRequest, RefusesAWrongTypeBeforeItMissesTheMode) {
    EXPECT_EQ(serveJson(R"({"mode":5})"), refusal(noJson));
    EXPECT_EQ(serveJson(R"({"genPairs":"true"})"), refusal(noJson));
}

TEST_F(AnswerRequest, PassesASignatureThatIsNoObjectOnToTheHandler) {
    EXPECT_EQ(serveJson(R"({"mode":"generateSignature","project":"p","signature":"x"})"),
              refusal(dataOrFile));
    EXPECT_EQ(serveJson(R"({"mode":"verifySignature","project":"p"})"),
              refusal("'signature' parameter is required"));
}

TEST_F(AnswerRequest, VerifiesWhenBothOperationsAreSelected) {
    EXPECT_EQ(serveForm(form("&sig_verify=true&sig=x")), (Answer{0, expectedText("false")}));
}

TEST_F(DispatchRequest, HandsTheRecordToTheHandlerOfItsMode) {
    const Answer verified = answerTo(verifying());
    EXPECT_EQ(verified, (Answer{0, expectedText("true")}));
    const Answer made = answerTo(signing());
    EXPECT_EQ(made.status, 0);
    EXPECT_TRUE(judgeAcceptsText(known.project, message, responseBody(made.output)));
}

TEST_F(DispatchRequest, AnswersAServerErrorForAModeWithoutAHandler) {
    const Answer expected{-1, expectedResponse(FirstLine::forServer, "500 Server Error",
                                               "text/plain", "Invalid mode")};
    for (const std::uint32_t mode : {0U, 3U, 7U, 0xFFFFFFFFU}) {
        RequestRecord record = verifying();
        record.mode = static_cast<RequestMode>(mode);
        EXPECT_EQ(answerTo(record), expected) << mode;
    }
}

TEST(MessageOf, TellsOfParametersThatMakeNoRecordAndNothingOfNoFault) {
    EXPECT_STREQ(messageOf(RequestFault::formParameters), "Failed to parse parameters");
    EXPECT_STREQ(messageOf(RequestFault::none), "");
}
