#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/expected_response.h"
#include "tests/support/program_run.h"

// Requests to the built program, as a web server makes them.

/// The path of a built program, in the folder that SIGN_PROGRAM_FOLDER of the environment names,
/// or else where this build puts it.
std::string programPath(std::string_view name);

inline constexpr std::string_view serverProgram = "sign.cgi";
inline constexpr std::string_view clientProgram = "nph-sign.cgi";

enum class InputKind { form, json };

/// A call of the program with this body, which its environment announces.
ProgramCall requestCall(InputKind kind, const std::string& body,
                        std::string_view program = serverProgram);

/// The end of that call.
ProgramEnd request(InputKind kind, const std::string& body,
                   std::string_view program = serverProgram);

/// What a request says, in the words that both inputs share. Empty members are left out.
struct SignRequest {
    enum class Operation { generate, verify };
    enum class Pairs { absent, off, on };

    Operation operation = Operation::generate;
    std::string project{};
    std::string encoding{};
    Pairs pairs = Pairs::absent;
    std::string data{};
    std::string dataEncoding{};
    std::string file{};
    std::string signature{};
};

/// The body that says it; a JSON body for valid UTF-8 alone.
std::string bodyText(InputKind kind, const SignRequest& request);

/// The end of the program on that body.
ProgramEnd request(InputKind kind, const SignRequest& request);

/// Form text of these pairs, with everything but letters and digits escaped.
std::string formText(const std::vector<std::pair<std::string, std::string>>& pairs);

/// Whether the program ended by itself with this status and these bytes on standard output, and
/// with none on standard error.
testing::AssertionResult endedWith(const ProgramEnd& end, int status, std::string_view output);

// The usual ends, of the program that answers a server.

testing::AssertionResult isRefused(const ProgramEnd& end, std::string_view message);
testing::AssertionResult isAnsweredText(const ProgramEnd& end, std::string_view body);
testing::AssertionResult isAnsweredJson(const ProgramEnd& end, std::string_view body);

/// The signature that a request is answered with in text; a failure of the test if it is not.
std::string answeredSignature(const ProgramEnd& end);

/// The exit status after a refusal.
inline constexpr int refusedStatus = 255;
