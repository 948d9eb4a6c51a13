#include "frontend/request_record.h"

#include <gtest/gtest.h>

TEST(TextEncoding, HasFixedValues) {
    EXPECT_EQ(static_cast<std::uint32_t>(TextEncoding::none), 0U);
    EXPECT_EQ(static_cast<std::uint32_t>(TextEncoding::plain), 1U);
    EXPECT_EQ(static_cast<std::uint32_t>(TextEncoding::base64), 2U);
    EXPECT_EQ(static_cast<std::uint32_t>(TextEncoding::urlencode), 3U);
    EXPECT_EQ(static_cast<std::uint32_t>(TextEncoding::json), 4U);
}

TEST(ParseTextEncoding, KnowsTheFourWords) {
    EXPECT_EQ(parseTextEncoding("plain"), TextEncoding::plain);
    EXPECT_EQ(parseTextEncoding("base64"), TextEncoding::base64);
    EXPECT_EQ(parseTextEncoding("urlencode"), TextEncoding::urlencode);
    EXPECT_EQ(parseTextEncoding("json"), TextEncoding::json);
}

TEST(ParseTextEncoding, GivesNoneForEveryOtherWord) {
    using namespace std::string_view_literals;
    for (const std::string_view word :
         {""sv, "JSON"sv, "Plain"sv, "none"sv, "jso"sv, "jsonx"sv, " json"sv, "json "sv, "base"sv,
          "base-64"sv, "urlEncode"sv, "1"sv, "json\0"sv, "\0"sv}) {
        EXPECT_EQ(parseTextEncoding(word), TextEncoding::none) << word;
    }
}

TEST(RequestRecord, StartsEmpty) {
    const RequestRecord record;
    EXPECT_EQ(record.project, "");
    EXPECT_EQ(record.mode, RequestMode::none);
    EXPECT_EQ(record.encoding, TextEncoding::none);
    EXPECT_FALSE(record.genPairs);
    EXPECT_EQ(record.signatureData, "");
    EXPECT_EQ(record.signatureDataEncoding, TextEncoding::none);
    EXPECT_EQ(record.signatureFile, "");
    EXPECT_EQ(record.signature, "");
}
