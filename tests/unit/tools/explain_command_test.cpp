#include "tools/commands/explain_command.h"

#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "tests/support/failing_calls.h"
#include "tests/unit/tools/command_run.h"
#include "tests/unit/tools/explanation_test.h"
#include "tests/unit/tools/file_status.h"
#include "tools/exit_status.h"
#include "tools/files/random_device.h"
#include "tools/rules.h"

namespace {

class ExplainCommand : public ExplanationTest {
protected:
    /// What the command says, which must explain something.
    static std::string textOf(const ExplainOptions& options) {
        const CommandEnd end = runCommand(explainCommand, options);
        EXPECT_EQ(end.status, exitDone);
        EXPECT_EQ(end.errors, "");
        return end.output;
    }
    static nlohmann::json jsonOf(ExplainOptions options) {
        options.json = true;
        return nlohmann::json::parse(textOf(options));
    }

    /// What the command says on standard error when it explains nothing.
    static std::string failureOf(const ExplainOptions& options) {
        const CommandEnd end = runCommand(explainCommand, options);
        EXPECT_EQ(end.status, exitFailed);
        EXPECT_EQ(end.output, "");
        return end.errors;
    }

    ExplainOptions bodyOptions(const std::string& body) const {
        ExplainOptions options;
        options.body = write("body", bytesOf(body));
        return options;
    }
    ExplainOptions verifyingOptions() const {
        ExplainOptions options;
        options.project = project;
        options.file = message;
        options.signature = known.text;
        return options;
    }
};

}  // namespace

TEST_F(ExplainCommand, SaysTheAnswerTheRuleAndWhatElseThereIsToKnow) {
    EXPECT_EQ(textOf(bodyOptions("sig_create=True&Project=x")),
              "The program answers 400 Bad Request: 'mode' parameter missing or invalid\n"
              "Rule request.mode: 'sig_create' is \"True\"; only exactly \"true\" selects it.\n"
              "Note: unknown parameters are ignored: \"Project\".\n");
}

TEST_F(ExplainCommand, SaysThatThereIsNoResponse) {
    ExplainOptions options = bodyOptions("a=1");
    options.contentLength = "-5";
    EXPECT_EQ(textOf(options),
              "The program ends without a response.\n"
              "Rule form.length-impossible: CONTENT_LENGTH is \"-5\", which counts as 2^63 - 1 "
              "bytes or more: the program ends by SIGABRT without a response.\n");
    const nlohmann::json explanation = jsonOf(options);
    EXPECT_TRUE(explanation.at("status").is_null());
    EXPECT_TRUE(explanation.at("body").is_null());
}

TEST_F(ExplainCommand, SaysItAllInOneJsonObject) {
    ExplainOptions options = bodyOptions("sig_create=True&Project=x");
    options.json = true;
    EXPECT_EQ(textOf(options),
              R"({"status":"400 Bad Request","body":"'mode' parameter missing or invalid",)"
              R"("rule":"request.mode","reason":"'sig_create' is \"True\"; only exactly \"true\" )"
              R"(selects it","remarks":["unknown parameters are ignored: \"Project\""]})"
              "\n");
}

TEST_F(ExplainCommand, TakesTheContentTypeThatIsGiven) {
    ExplainOptions options = bodyOptions("{}");
    EXPECT_EQ(jsonOf(options).at("reason"),
              "the form holds no parameter, and so neither 'sig_create' nor 'sig_verify'");
    options.contentType = "application/json";
    EXPECT_EQ(jsonOf(options).at("reason"), "'mode' is absent");
}

TEST_F(ExplainCommand, TakesTheLengthThatIsGivenOrTheBodysOwn) {
    ExplainOptions options = bodyOptions("{}{}");
    options.contentType = "application/json";
    EXPECT_EQ(jsonOf(options).at("rule"), "json.syntax");
    options.contentLength = "2";
    EXPECT_EQ(jsonOf(options).at("rule"), "request.mode");
    options.contentLength = std::nullopt;
    options.noContentLength = true;
    EXPECT_EQ(jsonOf(options).at("rule"), "json.length-unset");
}

TEST_F(ExplainCommand, ReadsTheBodyFromStandardInput) {
    ExplainOptions options;
    options.body = "-";
    const ScopedInput input("sig_verify=True");
    EXPECT_EQ(jsonOf(options).at("reason"),
              "'sig_verify' is \"True\"; only exactly \"true\" selects it");
}

TEST_F(ExplainCommand, ExplainsARequestInOptions) {
    EXPECT_EQ(textOf(verifyingOptions()),
              "The program answers 200 OK: true\n"
              "Rule signature.valid: the signature is valid for these bytes under the project's "
              "public point.\n");
    ExplainOptions signing;
    signing.project = project;
    signing.data = "abc";
    EXPECT_EQ(textOf(signing),
              "The program answers 200 OK: <signature>\n"
              "Rule signature.made: the key is complete, and a signature is made.\n");
}

TEST_F(ExplainCommand, NamesTheOptionsOfARequestInOptions) {
    ExplainOptions options;
    options.data = "abc";
    EXPECT_EQ(jsonOf(options).at("reason"), "--project is absent or empty");
    options.project = project;
    options.file = message;
    EXPECT_EQ(jsonOf(options).at("reason"),
              "--data and --file are both given, and only one may be");
    options.file = std::nullopt;
    options.dataEncoding = "json";
    EXPECT_EQ(jsonOf(options).at("reason"),
              "--data-encoding is \"json\"; data are written as \"plain\" or \"base64\"");
    options.dataEncoding = "hex";
    EXPECT_EQ(
        jsonOf(options).at("remarks").at(0),
        "--data-encoding is \"hex\", which is not a known word: the default applies, \"plain\"");
    options.data = std::nullopt;
    EXPECT_EQ(jsonOf(options).at("reason"), "--data and --file are both absent or empty");
    options.signature = "";
    EXPECT_EQ(jsonOf(options).at("reason"),
              "--signature is absent or empty, and verifying needs it");
}

TEST_F(ExplainCommand, FailsOnABodyThatCannotBeRead) {
    ExplainOptions options;
    options.body = folder.file("absent");
    EXPECT_EQ(failureOf(options),
              "projectctl: " + folder.file("absent") + ": No such file or directory\n");
    options.body = folder.path();
    EXPECT_EQ(failureOf(options), "projectctl: " + folder.path() + ": Is a directory\n");
}

TEST_F(ExplainCommand, ListsAllRules) {
    ExplainOptions options;
    options.rules = true;
    std::string lines;
    nlohmann::json list = nlohmann::json::array();
    for (const Rule& rule : rules()) {
        lines += std::string(rule.code) + ": " + rule.sentence + "\n";
        list.push_back({{"code", rule.code}, {"sentence", rule.sentence}, {"page", pageOf(rule)}});
    }
    EXPECT_EQ(textOf(options), lines);
    EXPECT_EQ(jsonOf(options), list);
}

TEST_F(ExplainCommand, WaitsForNoWriterOfAFifoInThePlaceOfTheRandomDevice) {
    ScopedFileStatus status;
    status.files["/dev/urandom"] = Access{.owner = 0, .mode = S_IFIFO | 0666};
    ExplainOptions signing;
    signing.project = project;
    signing.data = "abc";
    EXPECT_EQ(failureOf(signing),
              "projectctl: " + *randomDeviceRefusal(RandomDeviceFault::fifo) + "\n");
    EXPECT_EQ(jsonOf(verifyingOptions()).at("rule"), "signature.valid");
}

TEST_F(ExplainCommand, LeavesTheEnvironmentAsItWas) {
    ::setenv("CONTENT_LENGTH", "17", 1);
    EXPECT_EQ(jsonOf(bodyOptions("a=b")).at("rule"), "request.mode");
    EXPECT_STREQ(std::getenv("CONTENT_LENGTH"), "17");
    ::unsetenv("CONTENT_LENGTH");
    EXPECT_EQ(jsonOf(bodyOptions("a=b")).at("rule"), "request.mode");
    EXPECT_EQ(std::getenv("CONTENT_LENGTH"), nullptr);
}

TEST_F(ExplainCommand, NamesTheBodyThatThereIsNoMemoryFor) {
    const ExplainOptions options = bodyOptions(std::string(300000, 'a'));
    ScopedFailingCalls calls;
    calls.blockLimit = 200000;
    EXPECT_EQ(failureOf(options),
              "projectctl: " + *options.body + ": there is not enough memory\n");
}
