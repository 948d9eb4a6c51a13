#include "frontend/response_writer.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/standard_streams.h"

namespace {

using namespace std::string_literals;

/// The bytes of one response, in the form that `nph` says.
std::string written(bool nph, const char* status, const char* contentType,
                    const ResponseBody& body) {
    nphOutput = nph;
    std::string output = capturedOutput([&] { writeResponse(status, contentType, body); });
    nphOutput = false;
    return output;
}

/// The response as "STATUS TYPE EXITSTATUS BODY".
std::string shown(const Response& response) {
    return response.status + " "s + response.contentType + ' ' +
           std::to_string(response.exitStatus) + ' ' +
           std::string(response.body.text, response.body.length);
}

}  // namespace

TEST(WriteResponse, WritesHeaderAndBodyForAServer) {
    EXPECT_EQ(written(false, "200 OK", "text/plain", "hello"),
              "Status: 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 5\r\n\r\nhello");
}

TEST(WriteResponse, WritesTheStatusLineItselfInTheOtherForm) {
    EXPECT_EQ(written(true, "200 OK", "text/plain", "hello"),
              "HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 5\r\n\r\nhello");
}

TEST(WriteResponse, EndsAfterTheFirstLineForAnEmptyBody) {
    EXPECT_EQ(written(false, "200 OK", "text/plain", ""), "Status: 200 OK\r\n\r\n\n");
    EXPECT_EQ(written(true, "400 Bad Request", "text/plain", ""),
              "HTTP/1.0 400 Bad Request\r\n\r\n\n");
    EXPECT_EQ(written(false, "200 OK", "text/plain", ResponseBody("unseen", 0)),
              "Status: 200 OK\r\n\r\n\n");
}

TEST(WriteResponse, CutsTheBodyAtAZeroByteButAnnouncesItsWholeLength) {
    EXPECT_EQ(written(false, "200 OK", "text/plain", "ab\0cd"s),
              "Status: 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 5\r\n\r\nab");
    EXPECT_EQ(written(false, "200 OK", "text/plain", "\0"s),
              "Status: 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 1\r\n\r\n");
}

TEST(WriteResponse, FormatsTheLengthAsASigned32BitNumber) {
    const auto announced = [](std::uint64_t length) {
        return written(false, "200 OK", "a/b", ResponseBody("x", length));
    };
    const auto expected = [](const std::string& length) {
        return "Status: 200 OK\r\nContent-Type: a/b\r\nContent-Length: " + length + "\r\n\r\nx";
    };
    EXPECT_EQ(announced(0x7FFFFFFF), expected("2147483647"));
    EXPECT_EQ(announced(0x80000000), expected("-2147483648"));
    EXPECT_EQ(announced(0xFFFFFFFF), expected("-1"));
    EXPECT_EQ(announced(0x100000000), expected("0"));
    EXPECT_EQ(announced(0x100000005), expected("5"));
}

TEST(WriteResponse, TakesPercentSignsAsTheyStand) {
    EXPECT_EQ(written(false, "%d %s", "%n", "%s%n%d"),
              "Status: %d %s\r\nContent-Type: %n\r\nContent-Length: 6\r\n\r\n%s%n%d");
}

TEST(RespondOk, AnswersInPlainText) {
    EXPECT_EQ(shown(respondOk("text")), "200 OK text/plain 0 text");
}

TEST(RespondBadRequest, AnswersInPlainTextAndYieldsMinusOne) {
    EXPECT_EQ(shown(respondBadRequest("why")), "400 Bad Request text/plain -1 why");
}

TEST(RespondServerError, AnswersWithItsOwnReasonPhraseAndYieldsMinusOne) {
    EXPECT_EQ(shown(respondServerError("why")), "500 Server Error text/plain -1 why");
}

TEST(RespondJson, AnswersInCompactText) {
    const nlohmann::json value{{"b", {1, true, nullptr}}, {"a", "x \xC3\xA9/\n"}};
    std::string text;
    EXPECT_EQ(shown(respondJson(value, text)),
              "200 OK application/json 0 {\"a\":\"x \xC3\xA9/\\n\",\"b\":[1,true,null]}");
}

TEST(RespondJson, IsStrictAboutInvalidText) {
    const nlohmann::json value{{"a", "\xFF"}};
    std::string text;
    EXPECT_THROW(respondJson(value, text), nlohmann::json::exception);
}
