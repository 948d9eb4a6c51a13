// What signing shows of its secrets to valgrind, which watches branches and addresses: nothing.

#include <gtest/gtest.h>

#include <string>

#include "curve/fast/processor.h"
#include "tests/support/program_run.h"

namespace {

constexpr int reported = 99;

ProgramEnd signUnderValgrind(const std::string& route) {
    ProgramCall call;
    call.path = SIGN_VALGRIND;
    call.arguments = {"valgrind", "--quiet", "--error-exitcode=" + std::to_string(reported),
                      SIGN_SECRET_SIGNING, route};
    call.environment["PATH"] = "/usr/bin:/bin";
    return runProgram(call);
}

TEST(SecretSigning, HasNoBranchAndNoAddressOfTheSecretsWithCarrylessMultiplication) {
    if (core::hasCarrylessMultiplication()) {
        const ProgramEnd end = signUnderValgrind("carryless");
        EXPECT_EQ(end.status, 0);
        EXPECT_EQ(end.errors, "");
    }
}

TEST(SecretSigning, IsReportedWhereABranchIsPlanted) {
    const ProgramEnd end = signUnderValgrind("planted");
    EXPECT_EQ(end.status, reported);
    EXPECT_NE(end.errors.find("branchOnNonce"), std::string::npos) << end.errors;
}

TEST(SecretSigning, IsReportedForTheDefiningRoute) {
    EXPECT_EQ(signUnderValgrind("defining").status, reported);
}

TEST(SecretSigning, IsReportedOnThePlainRouteForItsTableAlone) {
    const ProgramEnd end = signUnderValgrind("plain");
    EXPECT_EQ(end.status, reported);
    EXPECT_EQ(end.errors.find("Conditional jump"), std::string::npos) << end.errors;
    EXPECT_NE(end.errors.find("multiply163"), std::string::npos) << end.errors;
}

}  // namespace
