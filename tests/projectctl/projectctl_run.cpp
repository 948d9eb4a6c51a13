#include "tests/projectctl/projectctl_run.h"

#include <cstdlib>
#include <utility>

ProgramCall projectctlCall(std::vector<std::string> arguments, const std::string& input) {
    const char* chosen = std::getenv("SIGN_PROGRAM_FOLDER");
    arguments.insert(arguments.begin(), "projectctl");
    ProgramCall call;
    call.path = std::string(chosen == nullptr ? SIGN_BUILD_FOLDER : chosen) + "/projectctl";
    call.arguments = std::move(arguments);
    call.pieces = {input};
    return call;
}

ProgramEnd runProjectctl(std::vector<std::string> arguments, const std::string& input) {
    return runProgram(projectctlCall(std::move(arguments), input));
}

testing::AssertionResult endedWith(const ProgramEnd& end, int status, const std::string& output,
                                   const std::string& errors) {
    if (end.status == status && end.output == output && end.errors == errors) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "status " << end.status << ", signal " << end.signal << ", output \"" << end.output
           << "\", errors \"" << end.errors << '"';
}

testing::AssertionResult isFoundSound(const ProgramEnd& end, const std::string& path,
                                      const std::string& what) {
    const std::string start = path + ": fingerprint of the public key: ";
    constexpr std::size_t digits = 64;
    const std::string fingerprint =
        end.output.starts_with(start) ? end.output.substr(start.size(), digits) : "";
    if (fingerprint.find_first_not_of("0123456789abcdef") != std::string::npos) {
        return testing::AssertionFailure() << "no fingerprint: " << fingerprint;
    }
    return endedWith(end, 0, start + fingerprint + "\n" + path + ": sound" + what + "\n");
}
