// The reading of a JSON request against one that builds the whole tree and asks it.

#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "frontend/json_input.h"
#include "tests/support/long_run.h"
#include "tests/unit/frontend/random_json.h"
#include "tools/request/raw_request.h"

namespace {

using namespace std::string_literals;
using nlohmann::json;

std::optional<RequestRecord> readRecord(const std::string& body) {
    const RawRequest request{.contentLength = std::to_string(body.size()), .body = body};
    RequestRecord record;
    const RequestFault fault = fillRecordFromJson(record, RawRequestSource(request));
    return fault == RequestFault::none ? std::optional(record) : std::nullopt;
}

std::string text(const json& object, const char* name) {
    return object.value(name, ""s);
}

RequestMode modeOf(const std::string& word) {
    return word == "generateSignature" ? RequestMode::generateSignature
           : word == "verifySignature" ? RequestMode::verifySignature
                                       : RequestMode::none;
}

/// The record by the library's tree and its own access to members.
std::optional<RequestRecord> treeRecord(const std::string& body) {
    if (body.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    try {
        const json value = json::parse(body);
        RequestRecord record;
        record.project = text(value, "project");
        record.mode = modeOf(text(value, "mode"));
        record.encoding = parseTextEncoding(text(value, "encoding"));
        record.genPairs = value.value("genPairs", false);
        const auto signature = value.find("signature");
        if (signature != value.end() && signature->is_object()) {
            record.signatureData = text(*signature, "data");
            record.signatureDataEncoding = parseTextEncoding(text(*signature, "encoding"));
            record.signatureFile = text(*signature, "file");
            record.signature = text(*signature, "signature");
        }
        return record;
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

auto fields(const RequestRecord& record) {
    return std::tie(record.project, record.mode, record.encoding, record.genPairs,
                    record.signatureData, record.signatureDataEncoding, record.signatureFile,
                    record.signature);
}

/// Compares both readings; whether the body is taken.
bool isReadAsTheTree(const std::string& body) {
    const std::optional<RequestRecord> read = readRecord(body);
    const std::optional<RequestRecord> expected = treeRecord(body);
    const std::string shown = testing::PrintToString(body.substr(0, 2000));
    EXPECT_EQ(read.has_value(), expected.has_value()) << shown;
    if (read.has_value() && expected.has_value()) {
        EXPECT_EQ(fields(*read), fields(*expected)) << shown;
    }
    return expected.has_value();
}

}  // namespace

TEST(JsonReading, IsThatOfTheTreeForRandomTexts) {
    const int rounds = roundsOf(20000, 200000);
    int taken = 0;
    for (int i = 0; i < rounds && !testing::Test::HasFailure(); ++i) {
        taken += isReadAsTheTree(randomJsonRequest()) ? 1 : 0;
    }
    EXPECT_GT(taken, rounds / 4);
    EXPECT_GT(rounds - taken, rounds / 4);
}

TEST(JsonReading, IsThatOfTheTreeForSupersededMembers) {
    // Each pair of values under one name, in both orders, at both levels.
    const std::array values{"\"x\"",
                            "\"plain\"",
                            "\"verifySignature\"",
                            "true",
                            "false",
                            "null",
                            "5",
                            "1.5",
                            "[]",
                            "[\"x\"]",
                            "{}",
                            R"({"data":"d","encoding":"base64","file":"f","signature":"s"})",
                            R"({"data":5})",
                            R"({"file":[],"signature":{}})"};
    int taken = 0;
    for (const char* name : {"project", "mode", "encoding", "genPairs", "signature", "data", "x"}) {
        for (const char* first : values) {
            for (const char* second : values) {
                const std::string members =
                    "{\""s + name + "\":" + first + ",\"" + name + "\":" + second + "}";
                taken += isReadAsTheTree(members) ? 1 : 0;
                taken += isReadAsTheTree("{\"signature\":" + members + "}") ? 1 : 0;
            }
        }
    }
    EXPECT_GT(taken, 500);
}

TEST(JsonReading, IsThatOfTheTreeForMembersElsewhere) {
    const std::string object =
        R"({"project":5,"mode":null,"encoding":[],"genPairs":"x","data":1,"file":2,"signature":3})";
    const std::vector<std::string> taken{
        R"({"x":)" + object + "}",
        R"({"x":[)" + object + "]}",
        R"({"x":[[)" + object + "]," + object + "]}",
        R"({"signature":[)" + object + "]}",
        R"({"signature":{"x":)" + object + "}}",
        R"({"signature":{"x":[)" + object + "]}}",
        R"({"signature":{"data":"d","x":{"signature":)" + object + "}}}",
        R"({"x":{"signature":{"data":5}},"signature":{"data":"d"}})",
        R"({"signature":{"data":"d"},"x":{"signature":{"data":5}}})",
        R"({"signature":{"data":"d"},"x":{"data":5}})",
        R"({"signature":{"data":"d","x":{},"file":"f"}})",
        R"({"signature":{"data":"d","x":[],"file":"f"},"project":"p"})",
        R"({"signature":{"signature":"s","x":[{"signature":{}}]},"mode":"verifySignature"})"};
    for (const std::string& body : taken) {
        EXPECT_TRUE(isReadAsTheTree(body)) << body;
    }
    const std::vector<std::string> refused{object,
                                           "[" + object + "]",
                                           "[{}]",
                                           R"({"signature":)" + object + "}",
                                           R"({"signature":{"data":["x"]}})",
                                           R"({"signature":{"data":{"data":"x"}}})",
                                           R"({"project":["x"],"x":"project"})",
                                           R"({"x":{},"project":{"project":"p"}})"};
    for (const std::string& body : refused) {
        EXPECT_FALSE(isReadAsTheTree(body)) << body;
    }
}

TEST(JsonReading, IsThatOfTheTreeForOddTexts) {
    const std::string mark = "\xEF\xBB\xBF";
    const std::string zeros(400, '0');
    const std::vector<std::string> taken{
        mark + "{}",
        "{} \t\r\n",
        "{\"a\":1e-999}",
        "{\"a\":-0.0E+00}",
        "{\"a\":123456789012345678901234567890}",
        "{\"a\":0." + zeros + "1}",
        "{\"a\":\"\\ud83d\\ude00\x7F\"}",
        "{\"\":\"\",\"\":0}",
        R"({"project":"\u0000","signature":{"data":"\u0000"}})",
        R"({"pro\u006aect":"p","\u0073ignature":{"\u0064ata":"d"}})"};
    for (const std::string& body : taken) {
        EXPECT_TRUE(isReadAsTheTree(body)) << body;
    }
    const std::vector<std::string> refused{"",
                                           " ",
                                           mark,
                                           mark + mark + "{}",
                                           "\xEF\xBB{}",
                                           "\xFE\xFF{}",
                                           "{}" + mark,
                                           "{}\0"s,
                                           "\0{}"s,
                                           "{\"a\0\":1}"s,
                                           "{}}",
                                           "{}[]",
                                           "{},",
                                           "{\"a\":1e999}",
                                           "{\"a\":-1e999}",
                                           "{\"a\":1" + zeros + "}",
                                           "{\"a\":\"\xC0\xAF\"}",
                                           "{\"a\":\"\xED\xA0\x80\"}",
                                           "{\"a\":\"\xF5\x80\x80\x80\"}",
                                           "{\"\xFF\":1}",
                                           R"({"project":"p","project"})",
                                           R"({"genPairs":True})",
                                           R"({"a":NaN})",
                                           "null",
                                           "1e999",
                                           "\"x",
                                           "[1,2",
                                           R"({"x":[}]})",
                                           R"({"x":{]})",
                                           R"({"mode":5,})"};
    for (const std::string& body : refused) {
        EXPECT_FALSE(isReadAsTheTree(body)) << body;
    }
}
