// The memory of the program at its limit, which the sanitizers need for themselves.

#include <csignal>

#include "tests/program/sign_program.h"

TEST(ProgramAbort, IsTheEndWhenThereIsNoMemoryForTheBody) {
    for (const InputKind kind : {InputKind::form, InputKind::json}) {
        for (const char* length : {"9223372036854775806", "4611686018427387904"}) {
            ProgramCall call = requestCall(kind, kind == InputKind::form ? "a=1" : "{}");
            call.environment["CONTENT_LENGTH"] = length;
            const ProgramEnd end = runProgram(call);
            EXPECT_EQ(end.signal, SIGABRT) << length;
            EXPECT_EQ(end.output + end.errors, "") << length;
        }
    }
}
