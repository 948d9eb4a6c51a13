// Lengths that no memory can hold: the program ends by SIGABRT and says nothing.

#include <csignal>

#include "tests/program/sign_program.h"

namespace {

testing::AssertionResult abortsInSilence(InputKind kind, const char* length,
                                         std::string_view program) {
    const std::string body = kind == InputKind::form ? "a=1" : "{}";
    ProgramCall call = requestCall(kind, body, program);
    call.environment["CONTENT_LENGTH"] = length;
    const ProgramEnd end = runProgram(call);
    if (end.signal == SIGABRT && end.output.empty() && end.errors.empty()) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "status " << end.status << ", signal " << end.signal << ", standard output:\n"
           << end.output << "\nstandard error:\n"
           << end.errors;
}

}  // namespace

TEST(ProgramAbort, IsTheEndOfAFormOfImpossibleLength) {
    for (const std::string_view program : {serverProgram, clientProgram}) {
        for (const char* length :
             {"-5", "-2", "-9223372036854775808", "9223372036854775807", "9223372036854775808",
              "18446744073709551614", "-9223372036854775809"}) {
            EXPECT_TRUE(abortsInSilence(InputKind::form, length, program)) << length;
        }
    }
}

TEST(ProgramAbort, IsTheEndOfJsonOfNegativeOrImpossibleLength) {
    for (const std::string_view program : {serverProgram, clientProgram}) {
        for (const char* length :
             {"-1", "-5", "-9223372036854775808", "9223372036854775807", "9223372036854775808",
              "18446744073709551615", "27670116110564327423"}) {
            EXPECT_TRUE(abortsInSilence(InputKind::json, length, program)) << length;
        }
    }
}
