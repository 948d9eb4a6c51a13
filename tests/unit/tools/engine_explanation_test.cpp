#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/failing_calls.h"
#include "tests/support/project_key.h"
#include "tests/support/signature_text.h"
#include "tests/unit/tools/explanation_test.h"

namespace {

class ExplainEngine : public ExplanationTest {
protected:
    /// A form that signs this data, or this file, under a project.
    static std::string signing(const std::string& projectPath, const std::string& input) {
        return "sig_create=true&project=" + projectPath + input;
    }
    static std::string verifying(const std::string& projectPath, const std::string& input,
                                 const std::string& signature) {
        return "sig_verify=true&project=" + projectPath + input + "&sig=" + inForm(signature);
    }
    std::string messageFile() const { return "&sig_file=" + message; }

    /// The rule and the reason of what is not signed, and not verified either.
    static void expectUnusable(const std::string& projectPath, const std::string& input,
                               const std::string& reason) {
        const Explanation made = explainForm(signing(projectPath, input));
        EXPECT_EQ(made.status, "400 Bad Request");
        EXPECT_EQ(made.body, "Signature generation failed");
        EXPECT_EQ(reasonOf(made), reason);
        const Explanation verified = explainForm(verifying(projectPath, input, "AAAA"));
        EXPECT_EQ(verified.status, "200 OK");
        EXPECT_EQ(verified.body, "false");
        EXPECT_EQ(reasonOf(verified), reason);
    }

    /// The rule and the reason of a signature of the message that is not valid.
    std::string invalidity(const std::string& signature) const {
        const Explanation explanation = explainForm(verifying(project, messageFile(), signature));
        EXPECT_EQ(explanation.status, "200 OK");
        EXPECT_EQ(explanation.body, "false");
        return reasonOf(explanation);
    }

    std::string writeProject(const AttributeValues& attributes) const {
        return write("other", projectBytes(attributes));
    }
    AttributeValues attributes() const { return readProjectBytes(fileBytes(known.project)); }

    /// The text of a signature with one of the known numbers replaced.
    static std::string textOf(const std::string& r, const std::string& s) {
        return signatureText({r, s}, 21);
    }
};

const std::string one = "1";

}  // namespace

TEST_F(ExplainEngine, TellsThatASignatureIsMade) {
    const Explanation explanation = explainForm(signing(project, "&sig_data=abc"));
    EXPECT_EQ(explanation.status, "200 OK");
    EXPECT_EQ(explanation.body, "<signature>");
    EXPECT_EQ(reasonOf(explanation),
              "signature.made: the key is complete, and a signature is made");
    EXPECT_TRUE(explanation.remarks.empty());
}

TEST_F(ExplainEngine, RendersTheAnswerAsTheRequestAsks) {
    const std::string made = signing(project, messageFile());
    EXPECT_EQ(explainForm(made + "&genpairs=").body, "signature:<signature>");
    EXPECT_EQ(explainForm(made + "&genpairs=&encoding=json").body,
              "{\"signature\":\"<signature>\"}");
    const std::string verified = verifying(project, messageFile(), known.text);
    EXPECT_EQ(explainForm(verified + "&genpairs=1&encoding=plain").body, "valid:true");
    EXPECT_EQ(explainForm(verified + "&encoding=json").body, "{\"valid\":true}");
    EXPECT_EQ(explainJson(R"({"mode":"verifySignature","project":")" + project +
                          R"(","signature":{"data":"x","signature":"AAAA"}})")
                  .body,
              "{\"valid\":false}");
}

TEST_F(ExplainEngine, TellsThatASignatureIsValid) {
    const Explanation explanation = explainForm(verifying(project, messageFile(), known.text));
    EXPECT_EQ(explanation.body, "true");
    EXPECT_EQ(reasonOf(explanation),
              "signature.valid: the signature is valid for these bytes under the project's public "
              "point");
    EXPECT_TRUE(explanation.remarks.empty());
}

TEST_F(ExplainEngine, TellsThatASignatureIsOfOtherDataOrAnotherKey) {
    const std::string reason =
        "signature.mismatch: the signature was made over other data or under another key, or was "
        "altered";
    EXPECT_EQ(reasonOf(explainForm(verifying(project, "&sig_data=abc", known.text))), reason);
    const std::string other = writeProject(keyAttributes(randomProjectKey()));
    EXPECT_EQ(reasonOf(explainForm(verifying(other, messageFile(), known.text))), reason);
}

TEST_F(ExplainEngine, TellsDataThatStandForNothing) {
    for (const char* data : {"====", "A===", "%00==="}) {
        expectUnusable(project, "&sig_data_encoding=base64&sig_data=" + std::string(data),
                       "data.empty: the data stand for no bytes at all");
    }
}

TEST_F(ExplainEngine, TellsAFileThatCannotBeTakenBeforeTheProject) {
    const std::string absent = folder.file("absent");
    expectUnusable(
        absent, "&sig_file=" + absent,
        "file.open: the file \"" + absent + "\": cannot be opened: No such file or directory");
    const std::string empty = write("empty", {});
    expectUnusable(project, "&sig_file=" + empty,
                   "file.empty: the file \"" + empty + "\": is empty");
    expectUnusable(project, "&sig_file=" + folder.path(),
                   "file.directory: the file \"" + folder.path() + "\": is a directory");
}

TEST_F(ExplainEngine, TellsAFileOfASizeThatDoesNotCount) {
    const std::string path = write("large", {});
    std::filesystem::resize_file(path, std::uintmax_t{1} << 31);
    expectUnusable(project, "&sig_file=" + path,
                   "file.too-large: the file \"" + path +
                       "\": has 2147483648 bytes: at most 2147483647 can be signed");
    std::filesystem::resize_file(path, std::uintmax_t{1} << 32);
    expectUnusable(project, "&sig_file=" + path,
                   "file.no-bytes: the file \"" + path +
                       "\": has 4294967296 bytes, a multiple of 4294967296: nothing of it counts");
}

TEST_F(ExplainEngine, TellsAFileThatIsNone) {
    expectUnusable(project, "&sig_file=/dev/null",
                   "file.no-regular: the file \"/dev/null\": not a regular file");
}

TEST_F(ExplainEngine, TellsEachWayInWhichAProjectDoesNotLoad) {
    const AttributeValues values = {{1, {10}}, {2, {20}}};
    ProjectImage entryAlone;
    entryAlone.entryCount = 1;
    ProjectImage damaged = projectImage(values);
    damaged.bodyDigest = Bytes(16);
    ProjectImage withEmpty = projectImage(values);
    withEmpty.directory[0].size = 0;
    ProjectImage tooLong = projectImage(values);
    tooLong.directory[1].size = 2;
    const std::vector<std::pair<std::string, Bytes>> files = {
        {"project.header", {'V', 'L'}},
        {"project.magic", bytesOf("no project, but of 24 bytes or more")},
        {"project.no-body", entryAlone.bytes()},
        {"project.digest", damaged.bytes()},
        {"project.entry-empty", withEmpty.bytes()},
        {"project.entry-range", tooLong.bytes()}};
    for (const auto& [rule, bytes] : files) {
        const std::string path = write("damaged", bytes);
        const std::string start = rule + ": the project \"" + path + "\": ";
        for (const std::string& body :
             {signing(path, "&sig_data=a"), verifying(path, "&sig_data=a", known.text)}) {
            const std::string reason = reasonOf(explainForm(body));
            EXPECT_TRUE(reason.starts_with(start)) << reason;
        }
    }
    for (const auto& [rule, path] : {std::pair("project.open", folder.file("absent")),
                                     {"project.directory", folder.path()},
                                     {"project.no-regular", std::string("/dev/null")}}) {
        EXPECT_EQ(explainForm(signing(path, "&sig_data=a")).rule, rule);
    }
}

TEST_F(ExplainEngine, TellsHowFarTheDirectoryOfAProjectReaches) {
    ProjectImage image = projectImage({{1, {10}}, {2, {20}}, {3, {30}}});
    image.entryCount = 5;
    image.values = Bytes(5, 1);
    const std::string path = write("short", image.bytes());
    expectUnusable(
        path, "&sig_data=a",
        "project.entries: the project \"" + path + "\": the directory ends after 3 of 5 entries");
}

TEST_F(ExplainEngine, TellsThatThereIsNoMemoryForAProject) {
    AttributeValues large = attributes();
    large[1] = Bytes(100000);
    const std::string path = writeProject(large);
    ScopedFailingCalls calls;
    calls.blockLimit = 50000;
    RequestRecord record;
    record.project = path;
    record.mode = RequestMode::generateSignature;
    record.signatureData = "a";
    const Explanation ofRecord = explainRecord(record, {});
    EXPECT_EQ(ofRecord.status, "");
    EXPECT_EQ(ofRecord.rule, "project.memory");
    for (const std::string& body :
         {signing(path, "&sig_data=a"), verifying(path, "&sig_data=a", known.text)}) {
        const Explanation explanation = explainForm(body);
        EXPECT_EQ(explanation.status, "");
        EXPECT_EQ(reasonOf(explanation),
                  "project.memory: there is not enough memory for the project \"" + path +
                      "\" with the data");
    }
}

TEST_F(ExplainEngine, TellsAKeyThatIsNotComplete) {
    for (const std::uint32_t id : {72U, 73U, 75U, 76U}) {
        AttributeValues left = attributes();
        left.erase(id);
        const std::string path = writeProject(left);
        const std::string start = "key.absent: the key of the project \"" + path + "\": ";
        for (const std::string& body :
             {signing(path, "&sig_data=a"), verifying(path, "&sig_data=a", known.text)}) {
            const std::string reason = reasonOf(explainForm(body));
            EXPECT_TRUE(reason.starts_with(start)) << reason;
            EXPECT_NE(reason.find(std::to_string(id)), std::string::npos) << reason;
        }
    }
}

TEST_F(ExplainEngine, TellsEachWayInWhichAKeyIsNotComplete) {
    const std::vector<std::tuple<std::string, std::uint32_t, Bytes>> keys = {
        {"key.too-large", 72, Bytes(297)},
        {"key.too-many-bits", 75, elementValue(513, "1")},
        {"key.degree", 73, elementValue(162, "1")},
        {"key.bits-differ", 76, elementValue(162, "1")},
        {"key.zero-scalar", 74, integerValue(8, {0})}};
    for (const auto& [rule, id, value] : keys) {
        AttributeValues changed = attributes();
        changed[id] = value;
        EXPECT_EQ(explainForm(signing(writeProject(changed), "&sig_data=a")).rule, rule);
    }
    AttributeValues withoutBits = attributes();
    withoutBits[75] = {0, 0, 0, 0};
    withoutBits[76] = {0};
    EXPECT_EQ(explainForm(signing(writeProject(withoutBits), "&sig_data=a")).rule, "key.no-bits");
}

TEST_F(ExplainEngine, TellsThatTheScalarIsMissingToSignAlone) {
    AttributeValues left = attributes();
    left.erase(74);
    const std::string path = writeProject(left);
    const Explanation made = explainForm(signing(path, "&sig_data=a"));
    EXPECT_EQ(made.rule, "key.absent");
    EXPECT_NE(made.reason.find("74"), std::string::npos) << made.reason;
    EXPECT_EQ(explainForm(verifying(path, messageFile(), known.text)).rule, "signature.valid");
}

TEST_F(ExplainEngine, TellsThatAnUnsoundKeyGivesNoSignature) {
    // By the curve's formulas 2 * (1, 0) = (1, 1) and 2 * (1, 1) = (1, 0): r is 1 for every nonce,
    // and this scalar makes every s of the data zero.
    AttributeValues unsound = keyAttributes(randomProjectKey());
    unsound[72] = elementValue(163, "1");
    unsound[73] = elementValue(163, "0");
    unsound[74] = integerValue(scalarOfZeroS(bytesOf("abc"), "1"));
    const std::string path = writeProject(unsound);
    const Explanation explanation = explainForm(signing(path, "&sig_data=abc"));
    EXPECT_EQ(explanation.body, "Signature generation failed");
    EXPECT_EQ(reasonOf(explanation),
              "signature.none: the key is complete, but no attempt gives a signature: its base "
              "point or scalar is unsound");
    EXPECT_EQ(explanation.remarks,
              std::vector<std::string>{"signatures under the key of the project \"" + path +
                                       "\" cannot be relied on: the base point is not on the "
                                       "curve"});
    EXPECT_EQ(explainForm(signing(path, "&sig_data=abd")).rule, "signature.made");
}

TEST_F(ExplainEngine, TellsAnUnsoundKeyBeforeOtherData) {
    const auto reasonUnder = [this](std::uint32_t id, const Bytes& value) {
        AttributeValues unsound = attributes();
        unsound[id] = value;
        return reasonOf(explainForm(verifying(writeProject(unsound), "&sig_data=a", known.text)));
    };
    const std::string start =
        "key.unsound: the signature is well formed, but signatures under the key of the project "
        "\"" +
        folder.file("other") + "\" cannot be relied on: ";
    Bytes shortX = elementValue(163, "1");
    shortX.resize(20);
    EXPECT_EQ(reasonUnder(72, shortX),
              start + "attribute 72 (x of the base point) has 20 bytes instead of 32");
    EXPECT_EQ(reasonUnder(73, elementValue(163, "1")),
              start + "the base point is not on the curve");
    EXPECT_EQ(reasonUnder(74, integerValue("1234567")),
              start +
                  "the public point is not the product of the private scalar and the base "
                  "point");
    EXPECT_EQ(reasonUnder(74, integerValue(curveOrderDigits)),
              start + "attribute 74 (private scalar) is not below the order");
    // What is wrong and makes no difference is no reason.
    EXPECT_EQ(reasonUnder(74, integerValue(0, {})).substr(0, 18), "signature.mismatch");
}

TEST_F(ExplainEngine, TellsWhatIsWrongWithASignatureText) {
    EXPECT_EQ(invalidity("%00"), "signature.empty: the signature is empty");
    EXPECT_EQ(invalidity(std::string(129, 'A')),
              "signature.too-long: the signature has 129 characters, more than 128");
    EXPECT_EQ(invalidity("ABCDE"),
              "signature.groups: the signature has 5 characters, which is not a multiple of four");
    EXPECT_EQ(invalidity("===="),
              "signature.padding: the signature has 4 \"=\", but its groups hold only 3 bytes");
    EXPECT_EQ(invalidity(std::string(60, 'b')),
              "signature.too-many-bytes: the signature stands for 45 bytes, more than 42");
    EXPECT_EQ(invalidity("A==="), "signature.no-bytes: the signature stands for no bytes");
    EXPECT_EQ(invalidity(std::string(55, 'b') + "="),
              "signature.odd: the signature's halves are of odd length (41 bytes)");
    EXPECT_EQ(invalidity(textOf("0", one)), "signature.r-zero: r is zero");
    EXPECT_EQ(invalidity(textOf(one, "0")), "signature.s-zero: s is zero");
    EXPECT_EQ(invalidity(textOf(curveOrderDigits, one)),
              "signature.r-range: r is not below the order");
    EXPECT_EQ(invalidity(textOf(one, curveOrderDigits)),
              "signature.s-range: s is not below the order");
    EXPECT_EQ(invalidity(textOf(one, one)),
              "signature.r-padded: r is below 2^64 but padded to 21 bytes, a form that no "
              "signature is accepted in");
}
