#include "frontend/json_input.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <optional>
#include <stdexcept>

#include "tests/support/failing_calls.h"
#include "tools/request/raw_request.h"

namespace {

using namespace std::string_literals;

/// The record that the body fills, or nothing when it is refused.
std::optional<RequestRecord> readJson(const RawRequest& request) {
    RequestRecord record;
    const RequestFault fault = fillRecordFromJson(record, RawRequestSource(request));
    return fault == RequestFault::none ? std::optional(record) : std::nullopt;
}

std::optional<RequestRecord> readJson(const std::string& body) {
    return readJson(RawRequest{.contentLength = std::to_string(body.size()), .body = body});
}

bool isAccepted(const std::string& body) {
    return readJson(body).has_value();
}

}  // namespace

TEST(FillRecordFromJson, CopiesEveryKnownMember) {
    const auto record = readJson(R"({"project":"p","mode":"verifySignature","encoding":"plain",
        "genPairs":true,"signature":{"data":"d","encoding":"base64","file":"f","signature":"s",
        "other":1},"other":[]})");
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->project, "p");
    EXPECT_EQ(record->mode, RequestMode::verifySignature);
    EXPECT_EQ(record->encoding, TextEncoding::plain);
    EXPECT_TRUE(record->genPairs);
    EXPECT_EQ(record->signatureData, "d");
    EXPECT_EQ(record->signatureDataEncoding, TextEncoding::base64);
    EXPECT_EQ(record->signatureFile, "f");
    EXPECT_EQ(record->signature, "s");
}

TEST(FillRecordFromJson, GivesAbsentMembersTheirDefaults) {
    const auto record = readJson("{}");
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->mode, RequestMode::none);
    EXPECT_EQ(record->encoding, TextEncoding::none);
    EXPECT_EQ(record->signatureDataEncoding, TextEncoding::none);
    EXPECT_FALSE(record->genPairs);
    EXPECT_EQ(record->project + record->signatureData + record->signatureFile + record->signature,
              "");
}

TEST(FillRecordFromJson, KnowsTwoModesByTheirExactWords) {
    EXPECT_EQ(readJson(R"({"mode":"generateSignature"})")->mode, RequestMode::generateSignature);
    EXPECT_EQ(readJson(R"({"mode":"verifySignature"})")->mode, RequestMode::verifySignature);
    for (const char* word : {"sign", "", "GenerateSignature", "generateSignature ", "true", "none",
                             "verifySignature\\u0000", "verify"}) {
        const auto record = readJson("{\"mode\":\""s + word + "\"}");
        ASSERT_TRUE(record.has_value()) << word;
        EXPECT_EQ(record->mode, RequestMode::none) << word;
    }
}

TEST(FillRecordFromJson, TakesUnknownEncodingWordsForNone) {
    const auto record = readJson(R"({"encoding":"JSON","signature":{"encoding":"hex"}})");
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->encoding, TextEncoding::none);
    EXPECT_EQ(record->signatureDataEncoding, TextEncoding::none);
}

TEST(FillRecordFromJson, KeepsTheTwoEncodingsApart) {
    const auto record = readJson(R"({"encoding":"urlencode","signature":{"encoding":"json"}})");
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->encoding, TextEncoding::urlencode);
    EXPECT_EQ(record->signatureDataEncoding, TextEncoding::json);
}

TEST(FillRecordFromJson, DoesNotKnowTheNamesOfFormParametersNorOtherCases) {
    const auto record = readJson(
        R"({"sig_create":"true","genpairs":5,"Project":1,"MODE":2,"sig":3,"data":4,"file":[]})");
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->mode, RequestMode::none);
    EXPECT_FALSE(record->genPairs);
    EXPECT_EQ(record->signatureData + record->signatureFile, "");
}

TEST(FillRecordFromJson, DecodesEscapesAndTakesBytesBeyondAscii) {
    const auto record =
        readJson("{\"signature\":{\"data\":\"a\\u0000\\u00e9\\n\xC3\xA9\",\"file\":\"\\u0000\"}}");
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->signatureData, "a\0\xC3\xA9\n\xC3\xA9"s);
    EXPECT_EQ(record->signatureFile, "\0"s);
}

TEST(FillRecordFromJson, RefusesTopLevelMembersOfAnotherType) {
    for (const char* member : {"project", "mode", "encoding"}) {
        for (const char* value : {"5", "1.5", "true", "null", "[]", "{}", "[\"x\"]"}) {
            const std::string body = "{\""s + member + "\":" + value + "}";
            EXPECT_FALSE(isAccepted(body)) << body;
        }
    }
    for (const char* value : {"\"true\"", "1", "0", "null", "[]", "{}", "\"\""}) {
        const std::string body = "{\"genPairs\":"s + value + "}";
        EXPECT_FALSE(isAccepted(body)) << body;
    }
    EXPECT_TRUE(isAccepted(R"({"genPairs":false})"));
}

TEST(FillRecordFromJson, RefusesMembersUnderSignatureOfAnotherType) {
    for (const char* member : {"data", "encoding", "file", "signature"}) {
        for (const char* value : {"5", "true", "null", "[]", "{}"}) {
            const std::string body = "{\"signature\":{\""s + member + "\":" + value + "}}";
            EXPECT_FALSE(isAccepted(body)) << body;
        }
    }
}

TEST(FillRecordFromJson, PassesOverASignatureThatIsNoObject) {
    for (const char* value : {"\"x\"", "5", "null", "true", "[]", "[{\"data\":5}]"}) {
        const auto record =
            readJson(R"({"mode":"generateSignature","project":"p","signature":)"s + value + "}");
        ASSERT_TRUE(record.has_value()) << value;
        EXPECT_EQ(record->project, "p");
        EXPECT_EQ(record->signatureData + record->signatureFile + record->signature, "");
    }
}

TEST(FillRecordFromJson, RefusesWhatIsNoObject) {
    for (const char* body : {"[]", "\"x\"", "5", "true", "null", "[{\"project\":\"p\"}]"}) {
        EXPECT_FALSE(isAccepted(body)) << body;
    }
}

TEST(FillRecordFromJson, RefusesMalformedText) {
    for (const char* body : {"{",
                             "}",
                             "{]",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{\"a\":1,}",
                             "{a:1}",
                             "{'a':1}",
                             "{}{}",
                             "{} x",
                             "{}//",
                             "/**/{}",
                             "{\"a\":01}",
                             "{\"a\":tru}",
                             "{\"a\":\"\n\"}",
                             "{\"a\":\"\\x\"}",
                             "{\"a\":1e999}",
                             " ",
                             "a=1",
                             "{\"a\":\"\xFF\"}",
                             "{\"a\":\"\xC3\"}",
                             "{\"a\":\"\\ud800\"}"}) {
        EXPECT_FALSE(isAccepted(body)) << body;
    }
}

TEST(FillRecordFromJson, AllowsWhiteSpaceAroundTheObject) {
    EXPECT_TRUE(isAccepted(" \t\r\n{ } \n"));
}

TEST(FillRecordFromJson, LetsTheLastOfTwoMembersWin) {
    const auto record = readJson(
        R"({"project":"a","project":"b","signature":{"data":"x"},"signature":{"file":"f"}})");
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->project, "b");
    EXPECT_EQ(record->signatureData, "");
    EXPECT_EQ(record->signatureFile, "f");
    EXPECT_TRUE(isAccepted(R"({"genPairs":1,"genPairs":true})"));
    EXPECT_FALSE(isAccepted(R"({"genPairs":true,"genPairs":1})"));
}

TEST(FillRecordFromJson, ParsesDeepNesting) {
    constexpr std::size_t depth = 200000;
    const std::string arrays = std::string(depth, '[') + std::string(depth, ']');
    const auto record = readJson("{\"x\":" + arrays + ",\"project\":\"p\"}");
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->project, "p");
    EXPECT_FALSE(isAccepted("{\"x\":" + std::string(depth, '[')));
}

TEST(FillRecordFromJson, RefusesABodyThatThereIsNoMemoryToRead) {
    const std::string text(100000, 'x');
    const std::string arrays = std::string(100000, '[') + std::string(100000, ']');
    for (const std::string& body :
         {"{\"x\":\"" + text + "\"}", "{\"" + text + "\":0}",
          "{\"signature\":{\"data\":\"" + text + "\"}}", "{\"x\":" + arrays + "}"}) {
        EXPECT_TRUE(isAccepted(body));
        ScopedFailingCalls calls;
        // Room for the body, and none for what doubles beyond it.
        calls.blockLimit = body.size() + 1;
        EXPECT_FALSE(isAccepted(body));
        EXPECT_GT(calls.largestRequest, calls.blockLimit);
    }
}

TEST(FillRecordFromJson, LetsTheLackOfMemoryForTheBodyPassAsAnException) {
    ScopedFailingCalls calls;
    calls.blockLimit = 10000;
    EXPECT_THROW(readJson(RawRequest{.contentLength = "10000", .body = "{}"}), std::bad_alloc);
}

TEST(FillRecordFromJson, RefusesAnAbsentBody) {
    EXPECT_FALSE(readJson(RawRequest{.body = "{}"}).has_value());
    for (const char* length : {"", "0", "+0", "12x", "2x", " 2", "2 ", "0x2", "+-2", "-"}) {
        EXPECT_FALSE(readJson(RawRequest{.contentLength = length, .body = "{}"}).has_value())
            << length;
    }
    EXPECT_FALSE(readJson(RawRequest{.contentLength = "2", .body = ""}).has_value());
}

TEST(FillRecordFromJson, AcceptsASignInFrontOfTheLength) {
    EXPECT_TRUE(readJson(RawRequest{.contentLength = "+2", .body = "{}"}).has_value());
    EXPECT_TRUE(readJson(RawRequest{.contentLength = "002", .body = "{}"}).has_value());
}

TEST(FillRecordFromJson, TakesALengthThatWrapsAroundForWhatItWrapsTo) {
    // 2^64 + 2.
    EXPECT_TRUE(
        readJson(RawRequest{.contentLength = "18446744073709551618", .body = "{}"}).has_value());
    EXPECT_FALSE(
        readJson(RawRequest{.contentLength = "18446744073709551616", .body = "{}"}).has_value());
}

TEST(FillRecordFromJson, RefusesABodyShorterThanAnnounced) {
    EXPECT_FALSE(readJson(RawRequest{.contentLength = "3", .body = "{}"}).has_value());
    EXPECT_FALSE(readJson(RawRequest{.contentLength = "100000", .body = "{}"}).has_value());
}

TEST(FillRecordFromJson, ReadsNothingBehindTheAnnouncedLength) {
    EXPECT_TRUE(readJson(RawRequest{.contentLength = "2", .body = "{}garbage"}).has_value());
    EXPECT_FALSE(
        readJson(RawRequest{.contentLength = "5", .body = R"({"project":"p"})"}).has_value());
}

TEST(FillRecordFromJson, RefusesAZeroByteAnywhere) {
    const std::string body = R"( {"project" : "p", "signature":{"data":"d"} } )";
    ASSERT_TRUE(isAccepted(body));
    for (std::size_t place = 0; place <= body.size(); ++place) {
        std::string spoiled = body;
        spoiled.insert(place, 1, '\0');
        EXPECT_FALSE(isAccepted(spoiled)) << place;
    }
}

TEST(FillRecordFromJson, LetsImpossibleLengthsPassAsAnException) {
    for (const char* length : {"-1", "-5", "9223372036854775807", "9223372036854775808",
                               "18446744073709551615", "-9223372036854775808"}) {
        EXPECT_THROW(readJson(RawRequest{.contentLength = length, .body = "{}"}), std::length_error)
            << length;
    }
}

TEST(FillRecordFromJson, TellsTheRuleThatTheBodyBreaks) {
    struct Case {
        std::optional<std::string> length;  ///< the true one if none is given
        std::string body;
        RequestFault fault;
    };
    for (const auto& [length, body, fault] :
         {Case{"", "{}", RequestFault::jsonLengthZero},
          {"12x", "{}", RequestFault::jsonLengthZero},
          {"3", "{}", RequestFault::jsonBodyShort},
          {"3", "", RequestFault::jsonBodyShort},
          {"3", "{\0"s, RequestFault::jsonBodyShort},
          {{}, "{}\0"s, RequestFault::jsonZeroByte},
          {{}, "{", RequestFault::jsonSyntax},
          {{}, " ", RequestFault::jsonSyntax},
          {{}, "{} {}", RequestFault::jsonSyntax},
          {{}, "nul", RequestFault::jsonSyntax},
          {{}, R"({"project":1,})", RequestFault::jsonSyntax},
          {{}, R"({"x":1e999})", RequestFault::jsonNumber},
          {{}, "1e999", RequestFault::jsonNumber},
          {{}, "5", RequestFault::jsonNoObject},
          {{}, "\"x\"", RequestFault::jsonNoObject},
          {{}, "null", RequestFault::jsonNoObject},
          {{}, "[", RequestFault::jsonNoObject},
          {{}, R"({"project":1})", RequestFault::jsonMemberType},
          {{}, R"({"signature":{"file":[]}})", RequestFault::jsonMemberType},
          {{}, "{}", RequestFault::none}}) {
        RequestRecord record;
        const RawRequest request{.contentLength = length.value_or(std::to_string(body.size())),
                                 .body = body};
        EXPECT_EQ(fillRecordFromJson(record, RawRequestSource(request)), fault) << body;
    }
    RequestRecord record;
    const RawRequest unset{.body = "{}"};
    EXPECT_EQ(fillRecordFromJson(record, RawRequestSource(unset)), RequestFault::jsonLengthUnset);
}

TEST(ParseDecimal, ReadsDigitsWithOneOptionalSign) {
    EXPECT_EQ(parseDecimal("0"), 0);
    EXPECT_EQ(parseDecimal("12"), 12);
    EXPECT_EQ(parseDecimal("+12"), 12);
    EXPECT_EQ(parseDecimal("-12"), -12);
    EXPECT_EQ(parseDecimal("0012"), 12);
    EXPECT_EQ(parseDecimal("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(parseDecimal("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
}

TEST(ParseDecimal, GivesZeroForEveryOtherText) {
    for (const char* text : {"", "+", "-", "12x", "x12", " 12", "12 ", "\t12", "--12", "++12",
                             "+-12", "1-2", "1.5", "0x10", "1e3", "12\n", "1,000", "\xB2"}) {
        EXPECT_EQ(parseDecimal(text), 0) << '"' << text << '"';
    }
}

TEST(ParseDecimal, StopsAtNothingButTheEndAroundTheDigits) {
    // The neighbours of the digits in ASCII.
    EXPECT_EQ(parseDecimal("1/"), 0);
    EXPECT_EQ(parseDecimal("1:"), 0);
}

TEST(ParseDecimal, WrapsAroundOutsideTheRange) {
    EXPECT_EQ(parseDecimal("9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(parseDecimal("18446744073709551615"), -1);
    EXPECT_EQ(parseDecimal("18446744073709551616"), 0);
    EXPECT_EQ(parseDecimal("18446744073709551621"), 5);
    EXPECT_EQ(parseDecimal("-18446744073709551621"), -5);
    EXPECT_EQ(parseDecimal("-9223372036854775809"), std::numeric_limits<std::int64_t>::max());
    // 10^30 modulo 2^64, as a signed number.
    EXPECT_EQ(parseDecimal("1000000000000000000000000000000"), 5076944270305263616);
}
