#include "frontend/response_writer.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/expected_response.h"
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
    EXPECT_EQ(capturedOutput([] { respondOk("text"); }),
              expectedResponse(FirstLine::forServer, "200 OK", "text/plain", "text"));
}

TEST(RespondBadRequest, AnswersInPlainTextAndYieldsMinusOne) {
    std::int32_t status = 0;
    EXPECT_EQ(capturedOutput([&] { status = respondBadRequest("why"); }),
              expectedResponse(FirstLine::forServer, "400 Bad Request", "text/plain", "why"));
    EXPECT_EQ(status, -1);
}

TEST(RespondServerError, AnswersWithItsOwnReasonPhraseAndYieldsMinusOne) {
    std::int32_t status = 0;
    EXPECT_EQ(capturedOutput([&] { status = respondServerError("why"); }),
              expectedResponse(FirstLine::forServer, "500 Server Error", "text/plain", "why"));
    EXPECT_EQ(status, -1);
}

TEST(RespondJson, WritesCompactText) {
    const nlohmann::json value{{"b", {1, true, nullptr}}, {"a", "x \xC3\xA9/\n"}};
    EXPECT_EQ(capturedOutput([&] { respondJson(value); }),
              expectedJson("{\"a\":\"x \xC3\xA9/\\n\",\"b\":[1,true,null]}"));
    EXPECT_EQ(capturedOutput([] {
                  respondJson({{"valid", true}});
              }),
              expectedJson("{\"valid\":true}"));
}

TEST(RespondJson, IsStrictAboutInvalidText) {
    const nlohmann::json value{{"a", "\xFF"}};
    EXPECT_EQ(capturedOutput([&] { EXPECT_THROW(respondJson(value), nlohmann::json::exception); }),
              "");
}
