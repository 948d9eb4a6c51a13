#include "frontend/form_input.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "tools/request/raw_request.h"

namespace {

using namespace std::string_literals;

FormParameters pairsOf(std::string_view text) {
    FormParameters parameters;
    parseFormPairs(parameters, text);
    return parameters;
}

RequestRecord recordOf(std::string_view text) {
    RequestRecord record;
    EXPECT_TRUE(fillRecordFromForm(pairsOf(text), record));
    return record;
}

/// The outcome of reading a form's body: the parameters, if there was form text.
struct ReadForm {
    RequestFault fault = RequestFault::none;
    FormParameters parameters{{"stale", "1"}};
    long taken = 0;  ///< bytes of the body that were read
};

ReadForm readBody(const std::optional<std::string>& length, const std::string& body,
                  const char* query = nullptr) {
    const RawRequest request{.contentLength = length, .body = body};
    const RawRequestSource raw(request);
    RequestSource source = raw;
    source.queryString = query;
    ReadForm form;
    form.fault = readFormParameters(form.parameters, source, true);
    form.taken = std::ftell(source.body);
    return form;
}

ReadForm readQuery(const char* query, const std::optional<std::string>& length = std::nullopt) {
    const RawRequest request{.contentLength = length, .body = "a=body"};
    const RawRequestSource raw(request);
    RequestSource source = raw;
    source.queryString = query;
    ReadForm form;
    form.fault = readFormParameters(form.parameters, source, false);
    form.taken = std::ftell(source.body);
    return form;
}

}  // namespace

TEST(ParseFormPairs, CutsAtAmpersandsAndDropsEmptyPieces) {
    EXPECT_EQ(pairsOf("a=1&&b=2&"), (FormParameters{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(pairsOf("&a=1"), (FormParameters{{"a", "1"}}));
    EXPECT_EQ(pairsOf(""), FormParameters{});
    EXPECT_EQ(pairsOf("&&&"), FormParameters{});
}

TEST(ParseFormPairs, CutsAtNoSemicolon) {
    EXPECT_EQ(pairsOf("a=1;b=2"), (FormParameters{{"a", "1;b=2"}}));
}

TEST(ParseFormPairs, DropsPiecesWithoutEquals) {
    EXPECT_EQ(pairsOf("a&b=1&c%3D2"), (FormParameters{{"b", "1"}}));
}

TEST(ParseFormPairs, KeepsFurtherEqualsInTheValue) {
    EXPECT_EQ(pairsOf("a=b=c"), (FormParameters{{"a", "b=c"}}));
    EXPECT_EQ(pairsOf("a=="), (FormParameters{{"a", "="}}));
}

TEST(ParseFormPairs, AllowsEmptyNamesAndValues) {
    EXPECT_EQ(pairsOf("=x"), (FormParameters{{"", "x"}}));
    EXPECT_EQ(pairsOf("a="), (FormParameters{{"a", ""}}));
    EXPECT_EQ(pairsOf("="), (FormParameters{{"", ""}}));
}

TEST(ParseFormPairs, DecodesNamesAndValuesAfterCutting) {
    EXPECT_EQ(pairsOf("%61+b=%26%3d%2B"), (FormParameters{{"a b", "&=+"}}));
    EXPECT_EQ(pairsOf("n%00m=v%00w"), (FormParameters{{"n\0m"s, "v\0w"s}}));
}

TEST(ParseFormPairs, KeepsEscapesInsideTheirPiece) {
    // The "%" at the end of a piece does not reach over the "&" or the "=".
    EXPECT_EQ(pairsOf("a=%&41=x"), (FormParameters{{"a", "\0"s}, {"41", "x"}}));
    EXPECT_EQ(pairsOf("a%=1"), (FormParameters{{"a\0"s, "1"}}));
}

TEST(ParseFormPairs, LetsTheLastOccurrenceOfADecodedNameWin) {
    EXPECT_EQ(pairsOf("a=1&%61=2"), (FormParameters{{"a", "2"}}));
    EXPECT_EQ(pairsOf("%61=1&b=3&a="), (FormParameters{{"a", ""}, {"b", "3"}}));
}

TEST(ParseFormPairs, AddsToWhatIsThere) {
    FormParameters parameters{{"a", "old"}, {"b", "kept"}};
    parseFormPairs(parameters, "a=new");
    EXPECT_EQ(parameters, (FormParameters{{"a", "new"}, {"b", "kept"}}));
}

TEST(FormParameters, StandInUnsignedBytewiseOrder) {
    const FormParameters parameters = pairsOf("b=&%ff=&a%00=&a=&%7f=&aa=&=");
    std::vector<std::string> names;
    for (const auto& [name, value] : parameters) {
        names.push_back(name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"", "a", "a\0"s, "aa", "b", "\x7f", "\xff"}));
}

TEST(GetFormString, GivesTheValueOrNothing) {
    const FormParameters parameters = pairsOf("a=x&b=");
    EXPECT_EQ(getFormString(parameters, "a"), "x");
    EXPECT_EQ(getFormString(parameters, "b"), "");
    EXPECT_EQ(getFormString(parameters, "A"), "");
    EXPECT_EQ(getFormString(parameters, ""), "");
}

TEST(GetFormBool, IsFalseOnlyForAnAbsentNameAndTheWordFalse) {
    EXPECT_FALSE(getFormBool(pairsOf(""), "a"));
    EXPECT_FALSE(getFormBool(pairsOf("a"), "a"));
    EXPECT_FALSE(getFormBool(pairsOf("a=false"), "a"));
    for (const char* text : {"a=true", "a=0", "a=", "a=False", "a=no", "a=false+", "a=false%00"}) {
        EXPECT_TRUE(getFormBool(pairsOf(text), "a")) << text;
    }
}

TEST(FillRecordFromForm, CopiesEveryKnownParameter) {
    const RequestRecord record = recordOf(
        "project=p&sig_create=true&encoding=json&genpairs=1&sig_data=d&sig_data_encoding=base64&"
        "sig_file=f&sig=s&other=o");
    EXPECT_EQ(record.project, "p");
    EXPECT_EQ(record.mode, RequestMode::generateSignature);
    EXPECT_EQ(record.encoding, TextEncoding::json);
    EXPECT_TRUE(record.genPairs);
    EXPECT_EQ(record.signatureData, "d");
    EXPECT_EQ(record.signatureDataEncoding, TextEncoding::base64);
    EXPECT_EQ(record.signatureFile, "f");
    EXPECT_EQ(record.signature, "s");
}

TEST(FillRecordFromForm, LeavesAbsentParametersEmpty) {
    const RequestRecord record = recordOf("=x");
    EXPECT_EQ(record.project, "");
    EXPECT_EQ(record.mode, RequestMode::none);
    EXPECT_EQ(record.encoding, TextEncoding::none);
    EXPECT_FALSE(record.genPairs);
    EXPECT_EQ(record.signatureData, "");
    EXPECT_EQ(record.signatureDataEncoding, TextEncoding::none);
    EXPECT_EQ(record.signatureFile, "");
    EXPECT_EQ(record.signature, "");
}

TEST(FillRecordFromForm, DoesNotKnowTheNamesOfJsonMembers) {
    const RequestRecord record =
        recordOf("mode=verifySignature&genPairs=true&data=d&file=f&signature=s&Project=p");
    EXPECT_EQ(record.mode, RequestMode::none);
    EXPECT_FALSE(record.genPairs);
    EXPECT_EQ(record.signatureData + record.signatureFile + record.signature + record.project, "");
}

TEST(FillRecordFromForm, SelectsAnOperationOnlyByTheExactWord) {
    EXPECT_EQ(recordOf("sig_create=true").mode, RequestMode::generateSignature);
    EXPECT_EQ(recordOf("sig_verify=true").mode, RequestMode::verifySignature);
    for (const char* value :
         {"True", "1", "on", "", "TRUE", "true+", "+true", "true%00", "false"}) {
        EXPECT_EQ(recordOf("sig_create="s + value).mode, RequestMode::none) << value;
        EXPECT_EQ(recordOf("sig_verify="s + value).mode, RequestMode::none) << value;
    }
}

TEST(FillRecordFromForm, VerifiesWhenBothOperationsAreSelected) {
    EXPECT_EQ(recordOf("sig_create=true&sig_verify=true").mode, RequestMode::verifySignature);
    EXPECT_EQ(recordOf("sig_verify=true&sig_create=true").mode, RequestMode::verifySignature);
    EXPECT_EQ(recordOf("sig_create=true&sig_verify=false").mode, RequestMode::generateSignature);
}

TEST(FillRecordFromForm, ReplacesAModeThatTheRecordHad) {
    RequestRecord record;
    record.mode = RequestMode::verifySignature;
    EXPECT_TRUE(fillRecordFromForm({}, record));
    EXPECT_EQ(record.mode, RequestMode::none);
}

TEST(FillRecordFromForm, KeepsZeroBytes) {
    const RequestRecord record = recordOf("project=p%00q&sig_data=%00d&sig_file=f%00&sig=s%00t");
    EXPECT_EQ(record.project, "p\0q"s);
    EXPECT_EQ(record.signatureData, "\0d"s);
    EXPECT_EQ(record.signatureFile, "f\0"s);
    EXPECT_EQ(record.signature, "s\0t"s);
}

TEST(ReadFormParameters, ReadsAsMuchOfTheBodyAsIsAnnounced) {
    const ReadForm form = readBody("7", "a=1&b=2&c=3");
    EXPECT_EQ(form.fault, RequestFault::none);
    EXPECT_EQ(form.parameters, (FormParameters{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(form.taken, 7);
}

TEST(ReadFormParameters, FindsNoPairInACutBodyWithoutEquals) {
    const ReadForm form = readBody("5", "abcdefgh");
    EXPECT_EQ(form.fault, RequestFault::none);
    EXPECT_TRUE(form.parameters.empty());
    EXPECT_EQ(form.taken, 5);
}

TEST(ReadFormParameters, AcceptsABodyShorterThanAnnounced) {
    const ReadForm form = readBody("1000", "a=1");
    EXPECT_EQ(form.fault, RequestFault::none);
    EXPECT_EQ(form.parameters, (FormParameters{{"a", "1"}}));
}

TEST(ReadFormParameters, EndsTheTextAtItsFirstZeroByte) {
    const ReadForm form = readBody("11", "a=1\0&b=2&c="s);
    EXPECT_EQ(form.fault, RequestFault::none);
    EXPECT_EQ(form.parameters, (FormParameters{{"a", "1"}}));
    EXPECT_EQ(form.taken, 11);
    EXPECT_TRUE(readBody("4", "\0a=1"s).parameters.empty());
}

TEST(ReadFormParameters, ClearsTheParametersFirst) {
    EXPECT_TRUE(readBody(std::nullopt, "").parameters.empty());
    EXPECT_TRUE(readQuery(nullptr).parameters.empty());
}

TEST(ReadFormParameters, TellsWhyThereIsNoForm) {
    struct Case {
        std::optional<std::string> length;
        std::string body;
        RequestFault fault;
    };
    for (const auto& [length, body, fault] :
         {Case{std::nullopt, "a=1", RequestFault::formLengthUnset},
          {"", "a=1", RequestFault::formLengthZero},
          {"0", "a=1", RequestFault::formLengthZero},
          {"abc", "a=1", RequestFault::formLengthZero},
          {"-0", "a=1", RequestFault::formLengthZero},
          {"x5", "a=1", RequestFault::formLengthZero},
          {"-", "a=1", RequestFault::formLengthZero},
          {"-1", "a=1", RequestFault::formLengthRange},
          {"18446744073709551615", "a=1", RequestFault::formLengthRange},
          {"18446744073709551616", "a=1", RequestFault::formLengthRange},
          {"99999999999999999999", "a=1", RequestFault::formLengthRange},
          {"5", "", RequestFault::formBodyEmpty}}) {
        const ReadForm form = readBody(length, body);
        EXPECT_EQ(form.fault, fault) << length.value_or("unset");
        EXPECT_EQ(form.taken, 0) << length.value_or("unset");
    }
}

TEST(ReadFormParameters, LooksAtNoQueryStringBesidesTheBody) {
    EXPECT_EQ(readBody("3", "a=1", "b=2").parameters, (FormParameters{{"a", "1"}}));
    EXPECT_NE(readBody(std::nullopt, "", "b=2").fault, RequestFault::none);
}

TEST(ReadFormParameters, ReadsALargeBodyWhole) {
    const std::string body = "a=" + std::string(3000000, 'v');
    const ReadForm form = readBody(std::to_string(body.size()), body);
    EXPECT_EQ(form.parameters, (FormParameters{{"a", body.substr(2)}}));
}

TEST(ReadFormParameters, ReadsTheQueryStringWhenNotFromTheBody) {
    const ReadForm form = readQuery("a=1&b=%32", "6");
    EXPECT_EQ(form.fault, RequestFault::none);
    EXPECT_EQ(form.parameters, (FormParameters{{"a", "1"}, {"b", "2"}}));
    EXPECT_EQ(form.taken, 0);
}

TEST(ReadFormParameters, FindsNothingWithoutAQueryString) {
    EXPECT_NE(readQuery(nullptr, "6").fault, RequestFault::none);
    EXPECT_NE(readQuery("").fault, RequestFault::none);
}

TEST(ReadFormParameters, TakesAPairOfQuotationMarksOffTheQueryString) {
    EXPECT_EQ(readQuery("\"a=1\"").parameters, (FormParameters{{"a", "1"}}));
    EXPECT_EQ(readQuery("\"\"a=1\"\"").parameters, (FormParameters{{"\"a", "1\""}}));
}

TEST(ReadFormParameters, LeavesALoneQuotationMarkInTheQueryString) {
    EXPECT_EQ(readQuery("\"a=1").parameters, (FormParameters{{"\"a", "1"}}));
    EXPECT_EQ(readQuery("a=1\"").parameters, (FormParameters{{"a", "1\""}}));
    EXPECT_EQ(readQuery("'a=1'").parameters, (FormParameters{{"'a", "1'"}}));
}

TEST(ReadFormParameters, FindsTextInAQueryStringOfQuotationMarksAlone) {
    for (const char* query : {"\"", "\"\"", "\"=\""}) {
        EXPECT_EQ(readQuery(query).fault, RequestFault::none) << query;
    }
    EXPECT_EQ(readQuery("\"\"").parameters, FormParameters{});
    EXPECT_EQ(readQuery("\"=\"").parameters, (FormParameters{{"", ""}}));
}
