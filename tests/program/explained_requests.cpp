#include "tests/program/explained_requests.h"

#include <gtest/gtest.h>

#include <csignal>

#include "tests/program/random_request.h"
#include "tests/program/sign_program.h"
#include "tools/request/request_explanation.h"

namespace {

std::string described(const RawRequest& request) {
    return "type " + request.contentType.value_or("(unset)") + ", length " +
           request.contentLength.value_or("(unset)") + ", body " +
           testing::PrintToString(request.body);
}

}  // namespace

ProgramCall programCall(const RawRequest& request) {
    ProgramCall call = requestCall(InputKind::form, request.body);
    call.environment = environmentOf(request);
    return call;
}

RequestAnswer answerOf(const ProgramEnd& end) {
    if (end.signal == SIGABRT && end.output.empty()) {
        return {};
    }
    const RequestAnswer answer = answerFrom(end.output);
    EXPECT_EQ(end.status, answer.status == "200 OK" ? 0 : refusedStatus);
    return answer;
}

std::map<std::string, int> compareRequests(int count, Answerer answererOf) {
    const RequestMaterial material;
    std::map<std::string, int> rules;
    for (int i = 0; i < count; ++i) {
        const RawRequest request = randomRequest(material);
        const Explanation explanation = explainRequest(request);
        const RequestAnswer answer = answererOf(request);
        EXPECT_TRUE(tells(explanation, answer))
            << described(request) << "\ntold: " << explanation.rule << ": " << explanation.reason
            << "\n\"" << explanation.status << "\" \"" << explanation.body
            << "\"\nanswered: " << answer;
        EXPECT_FALSE(explanation.reason.empty()) << explanation.rule;
        ++rules[explanation.rule];
    }
    return rules;
}
