#include "frontend/signature_requests.h"

#include "tests/support/messages.h"
#include "tests/support/project_builder.h"
#include "tests/support/signature_judge.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/frontend/engine_test.h"

namespace {

using namespace std::string_literals;

Answer generate(RequestRecord record) {
    record.mode = RequestMode::generateSignature;
    return answerTo(record);
}

Answer verify(RequestRecord record) {
    record.mode = RequestMode::verifySignature;
    return answerTo(record);
}

const Answer answerTrue{0, expectedText("true")};
const Answer answerFalse{0, expectedText("false")};

/// The body of a success in text; a failure of the test if the answer is none.
std::string signatureIn(const Answer& answer) {
    EXPECT_EQ(answer.status, 0);
    const std::string text = responseBody(answer.output);
    EXPECT_EQ(answer.output, expectedText(text));
    return text;
}

class SignatureRequests : public KnownRequest {};

}  // namespace

TEST_F(SignatureRequests, GenerateMakesASignatureThatLibcryptoAccepts) {
    const std::string text = signatureIn(generate(signing()));
    EXPECT_TRUE(judgeAcceptsText(known.project, message, text));
    EXPECT_FALSE(judgeAcceptsText(known.project, message + "x", text));
}

TEST_F(SignatureRequests, GenerateRendersItsTextByEncodingAndPairs) {
    for (const TextEncoding encoding :
         {TextEncoding::plain, TextEncoding::base64, TextEncoding::urlencode}) {
        for (const bool pairs : {false, true}) {
            RequestRecord record = signing();
            record.encoding = encoding;
            record.genPairs = pairs;
            const Answer answer = generate(record);
            const std::string body = responseBody(answer.output);
            const std::string before = pairs ? "signature:" : "";
            ASSERT_TRUE(body.starts_with(before));
            EXPECT_EQ(answer, (Answer{0, expectedText(body)}));
            EXPECT_TRUE(judgeAcceptsText(known.project, message, body.substr(before.size())));
        }
    }
}

TEST_F(SignatureRequests, GenerateRendersJsonWhateverThePairs) {
    for (const bool pairs : {false, true}) {
        RequestRecord record = signing();
        record.encoding = TextEncoding::json;
        record.genPairs = pairs;
        const Answer answer = generate(record);
        const std::string body = responseBody(answer.output);
        const std::string before = "{\"signature\":\"";
        ASSERT_TRUE(body.starts_with(before) && body.ends_with("\"}"));
        EXPECT_EQ(answer, (Answer{0, expectedJson(body)}));
        const std::string text = body.substr(before.size(), body.size() - before.size() - 2);
        EXPECT_TRUE(judgeAcceptsText(known.project, message, text));
    }
}

TEST_F(SignatureRequests, VerifyRendersItsAnswerByEncodingAndPairs) {
    for (const bool valid : {false, true}) {
        const std::string word = valid ? "true" : "false";
        RequestRecord record = verifying();
        record.signatureData += valid ? "" : "x";
        for (const TextEncoding encoding :
             {TextEncoding::plain, TextEncoding::base64, TextEncoding::urlencode}) {
            record.encoding = encoding;
            record.genPairs = false;
            EXPECT_EQ(verify(record), (Answer{0, expectedText(word)}));
            record.genPairs = true;
            EXPECT_EQ(verify(record), (Answer{0, expectedText("valid:" + word)}));
        }
        record.encoding = TextEncoding::json;
        EXPECT_EQ(verify(record), (Answer{0, expectedJson("{\"valid\":" + word + "}")}));
        record.genPairs = false;
        EXPECT_EQ(verify(record), (Answer{0, expectedJson("{\"valid\":" + word + "}")}));
    }
}

TEST_F(SignatureRequests, VerifyAcceptsEveryKnownSignature) {
    for (const SignatureCase& entry : signatureCases()) {
        RequestRecord record = verifying();
        record.project = entry.project;
        record.signatureData.assign(entry.message.begin(), entry.message.end());
        record.signature = entry.text;
        EXPECT_EQ(verify(record), entry.message.empty() ? refusal(dataOrFile) : answerTrue);
    }
}

TEST_F(SignatureRequests, RefuseNeitherDataNorFileAndBoth) {
    for (const bool both : {false, true}) {
        RequestRecord record = verifying();
        record.signatureData = both ? "data" : "";
        record.signatureFile = both ? "file" : "";
        EXPECT_EQ(generate(record), refusal(dataOrFile));
        EXPECT_EQ(verify(record), refusal(dataOrFile));
        // The rule on the encoding comes behind it, and so does decoding.
        record.signatureDataEncoding = TextEncoding::json;
        EXPECT_EQ(generate(record), refusal(dataOrFile));
        EXPECT_EQ(verify(record), refusal(dataOrFile));
        record.signatureDataEncoding = TextEncoding::base64;
        EXPECT_EQ(generate(record), refusal(dataOrFile));
    }
}

TEST_F(SignatureRequests, VerifyMissesTheSignatureBeforeAnythingElse) {
    RequestRecord record = verifying();
    record.signature = "";
    EXPECT_EQ(verify(record), refusal(signatureRequired));
    record.signatureDataEncoding = TextEncoding::urlencode;
    EXPECT_EQ(verify(record), refusal(signatureRequired));
    record.signatureData = "";
    EXPECT_EQ(verify(record), refusal(signatureRequired));
}

TEST_F(SignatureRequests, RefuseOtherEncodingsOfTheDataBeforeDecodingIt) {
    for (const TextEncoding encoding :
         {TextEncoding::none, TextEncoding::urlencode, TextEncoding::json}) {
        RequestRecord record = verifying();
        record.signatureDataEncoding = encoding;
        EXPECT_EQ(generate(record), refusal(wrongEncoding));
        EXPECT_EQ(verify(record), refusal(wrongEncoding));
        record.signatureData = "no base64!";
        EXPECT_EQ(generate(record), refusal(wrongEncoding));
    }
}

TEST_F(SignatureRequests, RefuseOtherEncodingsForAFileToo) {
    for (const TextEncoding encoding : {TextEncoding::urlencode, TextEncoding::json}) {
        RequestRecord record = verifying();
        record.signatureData = "";
        record.signatureFile = known.project;
        record.signatureDataEncoding = encoding;
        EXPECT_EQ(generate(record), refusal(wrongEncoding));
        EXPECT_EQ(verify(record), refusal(wrongEncoding));
    }
}

TEST_F(SignatureRequests, RefuseMalformedBase64BeforeLookingAtTheProject) {
    RequestRecord record = verifying();
    record.project = "/nowhere/at/all";
    record.signatureDataEncoding = TextEncoding::base64;
    for (const char* text : {"QUJ", "=AAA", "QUJD=EVG", "QU JD", "!!!!"}) {
        record.signatureData = text;
        EXPECT_EQ(generate(record), refusal(wrongBase64)) << text;
        EXPECT_EQ(verify(record), refusal(wrongBase64)) << text;
    }
}

TEST_F(SignatureRequests, TreatBase64WithoutBytesAsNoData) {
    RequestRecord record = verifying();
    record.signatureDataEncoding = TextEncoding::base64;
    for (const char* text : {"====", "A==="}) {
        record.signatureData = text;
        EXPECT_EQ(generate(record), refusal(notGenerated));
        EXPECT_EQ(verify(record), answerFalse);
    }
}

TEST_F(SignatureRequests, TellAMissingProjectInTwoWays) {
    RequestRecord record = verifying();
    record.project = "/nowhere/at/all";
    EXPECT_EQ(generate(record), refusal(notGenerated));
    EXPECT_EQ(verify(record), answerFalse);
}

TEST_F(SignatureRequests, RefuseInPlainTextEvenWhenJsonIsAsked) {
    RequestRecord record = verifying();
    record.encoding = TextEncoding::json;
    record.project = "/nowhere/at/all";
    EXPECT_EQ(generate(record), refusal(notGenerated));
    record.signature = "";
    EXPECT_EQ(verify(record), refusal(signatureRequired));
}

TEST_F(SignatureRequests, VerifyAnswersFalseForEveryUnusableSignature) {
    RequestRecord record = verifying();
    for (const std::string& text :
         {"x"s, "===="s, "signature:" + known.text, known.text + known.text + known.text,
          known.text.substr(1), known.text.substr(4), " " + known.text, "\0"s + known.text}) {
        record.signature = text;
        EXPECT_EQ(verify(record), answerFalse) << text;
    }
    // Any other character in the place of the first one, a "B" for an "A" for instance.
    std::string changed = known.text;
    changed[0] = known.text[0] == 'B' ? 'C' : 'B';
    record.signature = changed;
    EXPECT_EQ(verify(record), answerFalse);
}

TEST_F(SignatureRequests, EndTheSignatureAndThePathsAtAZeroByte) {
    const TemporaryFolder folder;
    const std::string file = folder.write("message", known.message);
    RequestRecord record = verifying();
    record.signature += "\0anything"s;
    record.project += "\0anything"s;
    EXPECT_EQ(verify(record), answerTrue);
    record.signatureData = "";
    record.signatureFile = file + "\0anything"s;
    EXPECT_EQ(verify(record), answerTrue);
    EXPECT_TRUE(judgeAcceptsText(known.project, message, signatureIn(generate(record))));
}

TEST_F(SignatureRequests, TakeAFilesContentAsItStands) {
    const TemporaryFolder folder;
    const std::string content = "QUJDREVG";
    RequestRecord record = signing();
    record.signatureData = "";
    record.signatureFile = folder.write("data", Bytes(content.begin(), content.end()));
    for (const TextEncoding encoding : {TextEncoding::plain, TextEncoding::base64}) {
        record.signatureDataEncoding = encoding;
        record.signature = signatureIn(generate(record));
        EXPECT_TRUE(judgeAcceptsText(known.project, content, record.signature));
        EXPECT_EQ(verify(record), answerTrue);
    }
}

TEST_F(SignatureRequests, TellAMissingOrEmptyFileInTwoWays) {
    const TemporaryFolder folder;
    RequestRecord record = verifying();
    record.signatureData = "";
    for (const std::string& path :
         {folder.file("none"), folder.write("empty", {}), folder.path()}) {
        record.signatureFile = path;
        EXPECT_EQ(generate(record), refusal(notGenerated)) << path;
        EXPECT_EQ(verify(record), answerFalse) << path;
    }
}

TEST_F(SignatureRequests, SignTheZeroByteThatDecodingAdds) {
    RequestRecord record = signing();
    record.signatureData = "QUJDREVG";
    record.signatureDataEncoding = TextEncoding::base64;
    record.signature = signatureIn(generate(record));
    EXPECT_TRUE(judgeAcceptsText(known.project, "ABC\0DEF"s, record.signature));
    EXPECT_EQ(verify(record), answerTrue);
    record.signatureDataEncoding = TextEncoding::plain;
    EXPECT_EQ(verify(record), answerFalse);
    record.signatureData = "ABCDEF";
    EXPECT_EQ(verify(record), answerFalse);
    record.signatureData = "ABC\0DEF"s;
    EXPECT_EQ(verify(record), answerTrue);
}

TEST_F(SignatureRequests, TakeOneGroupOfBase64ForTheBytesThemselves) {
    RequestRecord record = signing();
    record.signatureData = "QUJD";
    record.signatureDataEncoding = TextEncoding::base64;
    record.signature = signatureIn(generate(record));
    record.signatureData = "ABC";
    record.signatureDataEncoding = TextEncoding::plain;
    EXPECT_EQ(verify(record), answerTrue);
}

TEST_F(SignatureRequests, DecodeBase64BeyondAZeroByte) {
    RequestRecord record = signing();
    record.signatureData = "QUJD\0==="s;
    record.signatureDataEncoding = TextEncoding::base64;
    EXPECT_TRUE(judgeAcceptsText(known.project, "ABC\0"s, signatureIn(generate(record))));
    record.signatureData = "QUJD\0"s;
    EXPECT_EQ(generate(record), refusal(wrongBase64));
}

TEST_F(SignatureRequests, SignPlainDataWithItsZeroBytes) {
    RequestRecord record = signing();
    record.signatureData = "\0a\0"s;
    record.signature = signatureIn(generate(record));
    EXPECT_TRUE(judgeAcceptsText(known.project, "\0a\0"s, record.signature));
    record.signatureData = "\0a"s;
    EXPECT_EQ(verify(record), answerFalse);
}

TEST_F(SignatureRequests, GenerateIgnoresTheSignatureOfTheRecord) {
    RequestRecord record = signing();
    record.signature = "whatever";
    EXPECT_TRUE(judgeAcceptsText(known.project, message, signatureIn(generate(record))));
}
