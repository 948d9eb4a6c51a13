// Explanations of random requests against what the program answers to them.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/program/explained_requests.h"
#include "tests/support/request_answer.h"

namespace {

/// The answer of the built program.
RequestAnswer answerOfProgram(const RawRequest& request) {
    return answerOf(runProgram(programCall(request)));
}

}  // namespace

TEST(ExplanationComparison, FindsTheAnswersOfTheProgram) {
    compareRequests(SIGN_REQUESTS_TO_PROGRAM, answerOfProgram);
}

TEST(ExplanationComparison, FindsTheAnswersOfTheDriverAndMeetsEveryRule) {
    const std::map<std::string, int> rules = compareRequests(6000, answerOfDriver);
    // The others: key.no-bits is too rare; form.length-memory, json.length-memory, json.memory,
    // project.memory and file.mapping need memory to run out, project.unreadable and file.changed a
    // file that fails, and request.mode-unknown a record that no reader of the program makes.
    for (const char* rule : {"base64.character",
                             "base64.length",
                             "base64.padding",
                             "data.empty",
                             "file.directory",
                             "file.empty",
                             "file.no-bytes",
                             "file.no-regular",
                             "file.open",
                             "file.too-large",
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
                             "key.absent",
                             "key.bits-differ",
                             "key.degree",
                             "key.too-large",
                             "key.too-many-bits",
                             "key.unsound",
                             "key.zero-scalar",
                             "project.digest",
                             "project.directory",
                             "project.entries",
                             "project.entry-empty",
                             "project.entry-range",
                             "project.header",
                             "project.magic",
                             "project.no-body",
                             "project.no-regular",
                             "project.open",
                             "request.data-encoding",
                             "request.mode",
                             "request.no-input",
                             "request.no-signature",
                             "request.project",
                             "request.two-inputs",
                             "signature.empty",
                             "signature.groups",
                             "signature.made",
                             "signature.mismatch",
                             "signature.no-bytes",
                             "signature.none",
                             "signature.odd",
                             "signature.padding",
                             "signature.r-padded",
                             "signature.r-range",
                             "signature.r-zero",
                             "signature.s-range",
                             "signature.s-zero",
                             "signature.too-long",
                             "signature.too-many-bytes",
                             "signature.valid"}) {
        EXPECT_TRUE(rules.contains(rule)) << rule;
    }
    for (const auto& [rule, count] : rules) {
        RecordProperty("rule-" + rule, count);
    }
}
