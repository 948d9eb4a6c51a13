// Explanations of random requests against what the program answers to them.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "core/entry.h"
#include "tests/program/explained_requests.h"
#include "tests/support/request_answer.h"

namespace {

/// The answer of the built program.
RequestAnswer answerOfProgram(const RawRequest& request) {
    return answerOf(runProgram(programCall(request)));
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
