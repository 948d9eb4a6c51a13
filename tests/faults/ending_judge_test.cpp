// The judge of the fault tests, on endings that are wrong.

#include "tests/faults/ending_judge.h"

#include <csignal>

namespace {

class EndingOfARequest : public testing::Test {
protected:
    bool accepts(const WholeRequest& request, const ProgramEnd& end,
                 const Allowance& allowance = {}) {
        return judge.accepts(request, end, allowance);
    }

    const WholeRequests requests;
    EndingJudge judge{requests};
    const WholeRequest& falseOne = requests.named("verify data false, form");
    const WholeRequest& trueOne = requests.named("verify data true, form");
    const WholeRequest& signing = requests.named("sign data, form");
    const Allowance anything{.outputFails = true,
                             .errorsSpoken = true,
                             .answeredBeforeDeath = true,
                             .signals = {SIGABRT},
                             .failureStatus = true};
};

TEST_F(EndingOfARequest, MayBeItsAnswer) {
    for (const WholeRequest& request : requests.all()) {
        EXPECT_TRUE(accepts(request, runProgram(request.call())));
        EXPECT_EQ(judge.last(), Ending::answered) << request.name;
    }
}

TEST_F(EndingOfARequest, IsNeverTrueInThePlaceOfFalse) {
    const std::string trueResponse = trueOne.response("true");
    EXPECT_TRUE(accepts(trueOne, {.output = trueResponse, .status = 0}));
    EXPECT_FALSE(accepts(falseOne, {.output = trueResponse, .status = 0}, anything));
    EXPECT_TRUE(accepts(trueOne, {.output = trueOne.response("false"), .status = 0}));
    EXPECT_EQ(judge.last(), Ending::refused);
}

TEST_F(EndingOfARequest, HoldsNoSignatureOfOtherData) {
    WholeRequest other = signing;
    other.data.back() ^= 1;
    const ProgramEnd end = runProgram(signing.call());
    EXPECT_TRUE(accepts(signing, end));
    EXPECT_FALSE(accepts(other, end, anything));
    ProgramEnd changed = end;
    changed.output.back() = changed.output.back() == 'A' ? 'B' : 'A';
    EXPECT_FALSE(accepts(signing, changed, anything));
}

TEST_F(EndingOfARequest, IsNoMoreThanOneResponse) {
    const std::string response = falseOne.response("false");
    EXPECT_TRUE(accepts(falseOne, {.output = response, .status = 0}));
    EXPECT_FALSE(accepts(falseOne, {.output = response + response, .status = 0}, anything));
    EXPECT_FALSE(accepts(falseOne, {.output = response + "\n", .status = 0}, anything));
}

TEST_F(EndingOfARequest, IsCutWhereOutputFailsAlone) {
    for (const WholeRequest* request : {&falseOne, &signing}) {
        const ProgramEnd whole = runProgram(request->call());
        for (std::size_t length = 0; length < whole.output.size(); ++length) {
            const ProgramEnd cut{.output = whole.output.substr(0, length), .status = 0};
            EXPECT_FALSE(accepts(*request, cut)) << length;
            EXPECT_TRUE(accepts(*request, cut, {.outputFails = true})) << length;
            EXPECT_EQ(judge.last(), Ending::cut);
        }
        EXPECT_FALSE(accepts(*request, {.output = "Status: 400", .status = 0}, anything));
    }
}

TEST_F(EndingOfARequest, HasTheExitStatusOfItsResponse) {
    const std::string response = falseOne.response("false");
    EXPECT_FALSE(accepts(falseOne, {.output = response, .status = refusedStatus}, anything));
    EXPECT_FALSE(accepts(falseOne, {.output = "", .status = 0}));
    EXPECT_FALSE(accepts(falseOne, {.output = "", .status = 1}));
    EXPECT_TRUE(accepts(falseOne, {.output = "", .status = 1}, {.failureStatus = true}));
}

TEST_F(EndingOfARequest, IsDeathByTheSignalsThatAreAllowedAlone) {
    const ProgramEnd dead{.signal = SIGABRT};
    EXPECT_FALSE(accepts(falseOne, dead));
    EXPECT_TRUE(accepts(falseOne, dead, {.signals = {SIGABRT}}));
    EXPECT_EQ(judge.last(), Ending::dead);
    EXPECT_FALSE(accepts(falseOne, {.signal = SIGSEGV}, anything));
    EXPECT_FALSE(accepts(falseOne, {.output = "S", .signal = SIGABRT}, anything));
}

TEST_F(EndingOfARequest, IsSilentAndInTime) {
    const std::string response = falseOne.response("false");
    EXPECT_FALSE(accepts(falseOne, {.output = response, .errors = "x", .status = 0}));
    EXPECT_FALSE(accepts(falseOne, {.output = response, .status = 0, .timedOut = true}, anything));
}

}  // namespace
