#include "tests/support/failing_calls.h"
#include "tests/support/messages.h"
#include "tests/unit/tools/explanation_test.h"

namespace {

using namespace std::string_literals;

class ExplainJson : public ExplanationTest {
protected:
    static Explanation explainLength(const std::optional<std::string>& length,
                                     const std::string& body = "{}") {
        return explainRequest({"application/json", length, body});
    }

    /// The rule and the reason of a body that is refused as no JSON data.
    static std::string refusalOf(const RawRequest& request) {
        const Explanation explanation = explainRequest(request);
        EXPECT_EQ(explanation.status, "400 Bad Request");
        EXPECT_EQ(explanation.body, noJson);
        return reasonOf(explanation);
    }
    static std::string refusalOf(const std::string& body) { return refusalOf(json(body)); }
};

using Remarks = std::vector<std::string>;

}  // namespace

TEST_F(ExplainJson, TellsThatTheLengthIsUnset) {
    EXPECT_EQ(refusalOf({"application/json", std::nullopt, "{}"}),
              "json.length-unset: CONTENT_LENGTH is not set, so there is no body");
}

TEST_F(ExplainJson, TellsALengthThatIsNoNumber) {
    for (const char* length : {"2x", " 2", "", "+", "--2", "abc"}) {
        EXPECT_EQ(refusalOf({"application/json", length, "{}"}),
                  "json.length-zero: CONTENT_LENGTH is \"" + std::string(length) +
                      "\", which is not a decimal number and counts as 0, so there is no body");
    }
}

TEST_F(ExplainJson, TellsALengthOfZero) {
    for (const char* length : {"0", "-0", "+00", "18446744073709551616"}) {
        EXPECT_EQ(refusalOf({"application/json", length, "{}"}),
                  "json.length-zero: CONTENT_LENGTH is \"" + std::string(length) +
                      "\", which counts as 0, so there is no body");
    }
}

TEST_F(ExplainJson, TellsABodyThatIsShort) {
    EXPECT_EQ(refusalOf({"application/json", "10", "{}\n"}),
              "json.body-short: the body ends after 3 of the 10 bytes announced");
    EXPECT_EQ(refusalOf({"application/json", "1", ""}),
              "json.body-short: the body ends after 0 of the 1 byte announced");
}

TEST_F(ExplainJson, TellsTheLengthsThatEndTheProgram) {
    for (const char* length : {"-1", "-5", "-9223372036854775808", "9223372036854775807",
                               "9223372036854775808", "18446744073709551615"}) {
        const Explanation explanation = explainLength(length);
        EXPECT_EQ(explanation.status, "");
        EXPECT_EQ(explanation.body, "");
        EXPECT_EQ(reasonOf(explanation), "json.length-impossible: CONTENT_LENGTH is \"" +
                                             std::string(length) +
                                             "\", which counts as 2^63 - 1 bytes or more: the "
                                             "program ends by SIGABRT without a response");
    }
    EXPECT_EQ(explainLength("9223372036854775806").rule, "json.length-memory");
}

TEST_F(ExplainJson, TellsWhereAZeroByteStands) {
    EXPECT_EQ(refusalOf("{}\0"s), "json.zero-byte: byte 3 of the body is a zero byte");
    EXPECT_EQ(refusalOf("{\"mode\":\"\0\"}"s),
              "json.zero-byte: byte 10 of the body is a zero byte");
}

TEST_F(ExplainJson, TellsWhereTheSyntaxBreaks) {
    EXPECT_EQ(refusalOf("{\"mode\":}"),
              "json.syntax: the body is not JSON: at byte 9, unexpected '}'; expected '[', '{', or "
              "a literal");
    EXPECT_EQ(refusalOf("{\"mode\""),
              "json.syntax: the body is not JSON: at the end of the body, unexpected end of input; "
              "expected ':'");
    EXPECT_EQ(
        refusalOf("{}{}"),
        "json.syntax: the body is not JSON: at byte 3, unexpected '{'; expected end of input");
    EXPECT_EQ(refusalOf("{\"mode\":x"),
              "json.syntax: the body is not JSON: at byte 9, invalid literal");
    EXPECT_EQ(refusalOf("a=1"), "json.syntax: the body is not JSON: at byte 1, invalid literal");
    EXPECT_EQ(
        refusalOf("{\"a\":\"\xFF\"}"),
        "json.syntax: the body is not JSON: at byte 7, invalid string: ill-formed UTF-8 byte");
}

TEST_F(ExplainJson, TellsANumberThatIsTooLarge) {
    EXPECT_EQ(refusalOf("{\"a\":1e999}"),
              "json.number: the number that ends at byte 10 of the body is too large for a double");
}

TEST_F(ExplainJson, TellsThatThereIsNoMemoryForWhatTheBodySays) {
    const RawRequest request =
        json(R"({"mode":"generateSignature","project":")" + std::string(100000, 'p') + "\"}");
    ScopedFailingCalls calls;
    calls.blockLimit = request.body.size() + 4096;
    const Explanation explanation = explainRequest(request);
    EXPECT_EQ(explanation.body, "Invalid JSON data");
    EXPECT_EQ(reasonOf(explanation),
              "json.memory: there is not enough memory for the values of the body");
}

TEST_F(ExplainJson, TellsAValueThatIsNoObject) {
    EXPECT_EQ(refusalOf("[]"), "json.no-object: the body is an array and must be an object");
    EXPECT_EQ(refusalOf("5"), "json.no-object: the body is a number and must be an object");
    EXPECT_EQ(refusalOf("\"x\""), "json.no-object: the body is a string and must be an object");
    EXPECT_EQ(refusalOf("true"), "json.no-object: the body is a boolean and must be an object");
    EXPECT_EQ(refusalOf(" null"), "json.no-object: the body is null and must be an object");
}

TEST_F(ExplainJson, NamesTheMemberOfAWrongTypeAndTheType) {
    for (const char* name : {"project", "mode", "encoding"}) {
        EXPECT_EQ(refusalOf("{\""s + name + "\":5}"),
                  "json.member-type: '"s + name + "' is a number and must be a string");
    }
    EXPECT_EQ(refusalOf(R"({"mode":"generateSignature","project":"p","encoding":5})"),
              "json.member-type: 'encoding' is a number and must be a string");
    EXPECT_EQ(refusalOf("{\"genPairs\":\"true\"}"),
              "json.member-type: 'genPairs' is a string and must be a boolean");
    EXPECT_EQ(refusalOf("{\"genPairs\":1}"),
              "json.member-type: 'genPairs' is a number and must be a boolean");
    EXPECT_EQ(refusalOf("{\"mode\":null}"),
              "json.member-type: 'mode' is null and must be a string");
    for (const char* name : {"data", "encoding", "file", "signature"}) {
        EXPECT_EQ(refusalOf("{\"signature\":{\""s + name + "\":{}}}"),
                  "json.member-type: 'signature."s + name + "' is an object and must be a string");
    }
    // The first in the order of reading, whatever their order in the text.
    EXPECT_EQ(refusalOf("{\"signature\":{\"data\":[]},\"encoding\":[],\"mode\":true}"),
              "json.member-type: 'mode' is a boolean and must be a string");
}

TEST_F(ExplainJson, TellsWhyNoOperationIsSelected) {
    const auto reasonFor = [](const std::string& body) {
        const Explanation explanation = explainJson(body);
        EXPECT_EQ(explanation.status, "400 Bad Request");
        EXPECT_EQ(explanation.body, "'mode' parameter missing or invalid");
        return reasonOf(explanation);
    };
    EXPECT_EQ(reasonFor("{}"), "request.mode: 'mode' is absent");
    EXPECT_EQ(reasonFor("{\"mode\":\"sign\"}"),
              "request.mode: 'mode' is \"sign\"; only \"generateSignature\" and "
              "\"verifySignature\" select an operation");
    EXPECT_EQ(reasonFor("{\"Mode\":\"verifySignature\",\"mode\":\"\"}").substr(0, 28),
              "request.mode: 'mode' is \"\"; ");
}

TEST_F(ExplainJson, TellsASignatureThatIsNoObject) {
    const std::string start = R"({"mode":"generateSignature","project":"p")";
    const std::string reason =
        "request.no-input: 'signature.data' and 'signature.file' are both absent or empty";
    EXPECT_EQ(reasonOf(explainJson(start + R"(,"signature":"x"})")),
              reason + ": 'signature' is a string, not an object");
    EXPECT_EQ(reasonOf(explainJson(start + R"(,"signature":null})")),
              reason + ": 'signature' is null, not an object");
    EXPECT_EQ(reasonOf(explainJson(start + "}")), reason + ": 'signature' is absent");
    EXPECT_EQ(reasonOf(explainJson(start + R"(,"signature":{}})")), reason);
}

TEST_F(ExplainJson, RemarksOnALengthThatIsNotTheBodys) {
    const Explanation explanation = explainLength("2", "{}{}");
    EXPECT_EQ(explanation.rule, "request.mode");
    EXPECT_EQ(explanation.remarks,
              Remarks{"CONTENT_LENGTH announces 2 of the body's 4 bytes: the rest is not read"});
    EXPECT_EQ(explainLength("18446744073709551618", "{}").remarks,
              Remarks{"CONTENT_LENGTH is \"18446744073709551618\" and counts as 2"});
    EXPECT_EQ(explainLength("3", "{\"mode\"}").remarks,
              Remarks{"CONTENT_LENGTH announces 3 of the body's 8 bytes: the rest is not read"});
}

TEST_F(ExplainJson, RemarksOnMembersThatAreRepeated) {
    EXPECT_EQ(explainJson(R"({"mode":"sign","x":1,"mode":"","x":2})").remarks,
              (Remarks{"'mode' is given 2 times, and the last one counts",
                       "unknown members are ignored: \"x\""}));
    EXPECT_EQ(explainJson(R"({"signature":{"data":"a","file":"b","data":"c","data":"d"}})").remarks,
              Remarks{"'signature.data' is given 3 times, and the last one counts"});
    EXPECT_EQ(
        explainJson(R"({"signature":{"data":"a","data":"b"},"signature":{"data":"c"}})").remarks,
        Remarks{"'signature' is given 2 times, and the last one counts"});
    // Members of other objects have these names by chance.
    EXPECT_EQ(explainJson(R"({"signature":[{"data":"a","data":"b"}],"mode":""})").remarks,
              Remarks());
    EXPECT_EQ(explainJson(R"({"signature":{"x":{"data":"a","data":"b"}}})").remarks,
              Remarks{"unknown members are ignored: \"signature.x\""});
}

TEST_F(ExplainJson, RemarksOnMembersThatAreUnknown) {
    EXPECT_EQ(explainJson("{\"genpairs\":true}").remarks,
              Remarks{"unknown members are ignored: \"genpairs\""});
    EXPECT_EQ(explainJson("{\"data\":1,\"file\":2,\"sig\":3,\"signature\":{\"Data\":4}}").remarks,
              (Remarks{"unknown members are ignored: \"data\", \"file\", \"sig\"",
                       "unknown members are ignored: \"signature.Data\""}));
    EXPECT_EQ(explainJson("{\"genPairs\":true,\"signature\":{\"signature\":\"\"}}").remarks,
              Remarks());
}

TEST_F(ExplainJson, TakesAsManyMembersAsABodyHolds) {
    // Time in proportion to the body: a square of it would be minutes.
    std::string members;
    for (int i = 0; i < 200000; ++i) {
        members += ",\"" + std::to_string(i) + "\":{}";
    }
    EXPECT_EQ(explainJson("{\"mode\":\"sign\"" + members + "}").remarks,
              Remarks{"unknown members are ignored: \"0\", \"1\", \"2\" and 199997 more"});
    EXPECT_EQ(refusalOf("{\"mode\":5" + members + "}"),
              "json.member-type: 'mode' is a number and must be a string");
}
