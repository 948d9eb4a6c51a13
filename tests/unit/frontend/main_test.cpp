#include <gtest/gtest.h>

#include <array>
#include <csignal>

#include "core/state.h"
#include "frontend/response_writer.h"
#include "tests/support/environment.h"
#include "tests/support/expected_response.h"
#include "tests/support/messages.h"
#include "tests/support/signature_vectors.h"
#include "tests/support/standard_streams.h"
#include "tests/support/stopped_core.h"

/// The program's entry.
int signMain(int argumentCount, char** arguments);

namespace {

class Main : StoppedCore, public testing::Test {};
using MainDeathTest = Main;

struct Outcome {
    int status = 1;
    std::string output;
};

Outcome runMain(int argumentCount, char** arguments, const std::string& body,
                const std::string& length) {
    const ScopedCgiEnvironment environment(Environment{{"CONTENT_LENGTH", length}});
    const ScopedInput input(body);
    Outcome run;
    run.output = capturedOutput([&] { run.status = signMain(argumentCount, arguments); });
    return run;
}

Outcome runMain(std::string name, const std::string& body) {
    std::array<char*, 2> arguments{name.data(), nullptr};
    return runMain(1, arguments.data(), body, std::to_string(body.size()));
}

}  // namespace

TEST_F(Main, LeavesTheCoreStoppedAfterSuccess) {
    const SignatureCase& known = signatureCases().front();
    const Outcome run =
        runMain("sign.cgi", "sig_create=true&sig_data=abc&project=" + known.project);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, expectedText(responseBody(run.output)));
    EXPECT_EQ(core::coreArena, nullptr);
}

TEST_F(Main, LeavesTheCoreStoppedAfterARefusal) {
    const Outcome run = runMain("sign.cgi", "a=1");
    EXPECT_EQ(run.status, -1);
    EXPECT_EQ(run.output, expectedRefusal(modeMissing));
    EXPECT_EQ(core::coreArena, nullptr);
}

TEST_F(Main, StartsTheCoreForEveryRequest) {
    core::squareSpreadTable.fill(0);
    runMain("sign.cgi", "a=1");
    EXPECT_EQ(core::squareSpreadTable[255], 0x5555);
}

TEST_F(Main, FramesTheResponseByTheNameOfTheProgram) {
    EXPECT_EQ(runMain("/srv/bin/nph-sign.cgi", "a=1").output,
              expectedResponse(FirstLine::forClient, "400 Bad Request", "text/plain", modeMissing));
    EXPECT_TRUE(nphOutput);
    EXPECT_EQ(runMain("/srv/nph-bin/sign.cgi", "a=1").output, expectedRefusal(modeMissing));
    EXPECT_FALSE(nphOutput);
}

TEST_F(Main, TakesAnEmptyArgumentVectorForAnEmptyName) {
    nphOutput = true;
    std::array<char*, 1> none{};
    EXPECT_EQ(runMain(0, none.data(), "a=1", "3").output, expectedRefusal(modeMissing));
    EXPECT_FALSE(nphOutput);
}

TEST_F(MainDeathTest, AbortsInSilenceOnAnExceptionThatNothingCatches) {
    std::array<char, 9> name{"sign.cgi"};
    std::array<char*, 2> arguments{name.data(), nullptr};
    // Nothing may pass it, as nothing passes the start of a program.
    const auto run = [&]() noexcept {
        const ScopedCgiEnvironment environment(Environment{{"CONTENT_LENGTH", "-5"}});
        const ScopedInput input("a=1");
        signMain(1, arguments.data());
    };
    EXPECT_EXIT(run(), testing::KilledBySignal(SIGABRT), testing::Eq(std::string()));
}
