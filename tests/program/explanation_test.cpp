// Explanations of random requests against what the program answers to them.

#include <gtest/gtest.h>

#include <csignal>
#include <map>

#include "core/entry.h"
#include "tests/program/random_request.h"
#include "tests/program/sign_program.h"
#include "tests/support/random_operands.h"
#include "tests/support/request_answer.h"
#include "tools/request/request_explanation.h"

namespace {

using Answerer = RequestAnswer (*)(const RawRequest&);

/// The answer of the built program.
RequestAnswer answerOfProgram(const RawRequest& request) {
    ProgramCall call = requestCall(InputKind::form, request.body);
    call.environment = environmentOf(request);
    const ProgramEnd end = runProgram(call);
    if (end.signal == SIGABRT && end.output.empty()) {
        return {};
    }
    const RequestAnswer answer = answerFrom(end.output);
    EXPECT_EQ(end.status, answer.status == "200 OK" ? 0 : refusedStatus);
    return answer;
}

std::string described(const RawRequest& request) {
    return "type " + request.contentType.value_or("(unset)") + ", length " +
           request.contentLength.value_or("(unset)") + ", body " +
           testing::PrintToString(request.body);
}

/// Explains random requests until each is told as it is answered; the number of each rule.
std::map<std::string, int> compareRequests(int count, Answerer answerOf) {
    const RequestMaterial material;
    std::map<std::string, int> rules;
    for (int i = 0; i < count; ++i) {
        const RawRequest request = randomRequest(material);
        const Explanation explanation = explainRequest(request);
        const RequestAnswer answer = answerOf(request);
        EXPECT_TRUE(tells(explanation, answer))
            << described(request) << "\ntold: " << explanation.rule << ": " << explanation.reason
            << "\n\"" << explanation.status << "\" \"" << explanation.body
            << "\"\nanswered: " << answer;
        EXPECT_FALSE(explanation.reason.empty()) << explanation.rule;
        ++rules[explanation.rule];
    }
    return rules;
}

/// Explanations need the core, and so does the driver in this process.
class ExplanationComparison : public testing::Test {
protected:
    ExplanationComparison() { coreEntry::coreStart(); }
    ~ExplanationComparison() override { coreEntry::coreStop(); }
};

}  // namespace

TEST_F(ExplanationComparison, FindsTheAnswersOfTheProgram) {
    compareRequests(SIGN_REQUESTS_TO_PROGRAM, answerOfProgram);
}

TEST_F(ExplanationComparison, FindsTheAnswersOfTheDriverAndMeetsEveryRule) {
    const std::map<std::string, int> rules = compareRequests(6000, answerOfDriver);
    for (const char* rule : {"base64.character",
                             "base64.length",
                             "base64.padding",
                             "data.empty",
                             "file",
                             "form.body-empty",
                             "form.length-impossible",
                             "form.length-range",
                             "form.length-unset",
                             "form.length-zero",
                             "json.body-short",
                             "json.length-impossible",
                             "json.length-unset",
                             "json.length-zero",
                             "json.member-type",
                             "json.no-object",
                             "json.number",
                             "json.syntax",
                             "json.zero-byte",
                             "key",
                             "project",
                             "request.data-encoding",
                             "request.mode",
                             "request.no-input",
                             "request.no-signature",
                             "request.project",
                             "request.two-inputs",
                             "signature.made",
                             "signature.mismatch",
                             "signature.none",
                             "signature.text",
                             "signature.valid"}) {
        EXPECT_TRUE(rules.contains(rule)) << rule;
    }
    for (const auto& [rule, count] : rules) {
        RecordProperty("rule-" + rule, count);
    }
}
