#include "tests/program/sign_program.h"

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/support/hexadecimal.h"

namespace {

bool isLetterOrDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z');
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (isLetterOrDigit(character)) {
            result.push_back(character);
        } else {
            result.append("%").append(hexadecimalFromBytes(&character, 1));
        }
    }
    return result;
}

std::string formBody(const SignRequest& request) {
    std::vector<std::pair<std::string, std::string>> pairs;
    const auto add = [&](const char* name, const std::string& value) {
        if (!value.empty()) {
            pairs.emplace_back(name, value);
        }
    };
    const bool generates = request.operation == SignRequest::Operation::generate;
    add(generates ? "sig_create" : "sig_verify", "true");
    add("project", request.project);
    add("encoding", request.encoding);
    if (request.pairs != SignRequest::Pairs::absent) {
        add("genpairs", request.pairs == SignRequest::Pairs::on ? "true" : "false");
    }
    add("sig_data", request.data);
    add("sig_data_encoding", request.dataEncoding);
    add("sig_file", request.file);
    add("sig", request.signature);
    return formText(pairs);
}

std::string jsonBody(const SignRequest& request) {
    nlohmann::json body;
    const auto add = [](nlohmann::json& object, const char* name, const std::string& value) {
        if (!value.empty()) {
            object[name] = value;
        }
    };
    const bool generates = request.operation == SignRequest::Operation::generate;
    add(body, "mode", generates ? "generateSignature" : "verifySignature");
    add(body, "project", request.project);
    add(body, "encoding", request.encoding);
    if (request.pairs != SignRequest::Pairs::absent) {
        body["genPairs"] = request.pairs == SignRequest::Pairs::on;
    }
    nlohmann::json signature = nlohmann::json::object();
    add(signature, "data", request.data);
    add(signature, "encoding", request.dataEncoding);
    add(signature, "file", request.file);
    add(signature, "signature", request.signature);
    body["signature"] = signature;
    return body.dump();
}

}  // namespace

std::string programPath(std::string_view name) {
    const char* given = std::getenv("SIGN_PROGRAM_FOLDER");
    return std::string(given != nullptr ? given : SIGN_BUILD_FOLDER).append("/").append(name);
}

ProgramCall requestCall(InputKind kind, const std::string& body, std::string_view program) {
    ProgramCall call;
    call.path = programPath(program);
    call.arguments = {call.path};
    call.environment = {
        {"GATEWAY_INTERFACE", "CGI/1.1"},
        {"SERVER_PROTOCOL", "HTTP/1.1"},
        {"REQUEST_METHOD", "POST"},
        {"CONTENT_TYPE",
         kind == InputKind::json ? "application/json" : "application/x-www-form-urlencoded"},
        {"CONTENT_LENGTH", std::to_string(body.size())},
    };
    call.pieces = {body};
    return call;
}

ProgramEnd request(InputKind kind, const std::string& body, std::string_view program) {
    return runProgram(requestCall(kind, body, program));
}

std::string bodyText(InputKind kind, const SignRequest& request) {
    return kind == InputKind::form ? formBody(request) : jsonBody(request);
}

ProgramEnd request(InputKind kind, const SignRequest& request) {
    return ::request(kind, bodyText(kind, request));
}

std::string formText(const std::vector<std::pair<std::string, std::string>>& pairs) {
    std::string text;
    for (const auto& [name, value] : pairs) {
        text.append(text.empty() ? "" : "&").append(escaped(name)).append("=");
        text.append(escaped(value));
    }
    return text;
}

testing::AssertionResult endedWith(const ProgramEnd& end, int status, std::string_view output) {
    if (end.status == status && end.output == output && end.errors.empty()) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "status " << end.status << ", signal " << end.signal
           << (end.timedOut ? ", killed at the time limit" : "") << "\nstandard output:\n"
           << testing::PrintToString(end.output) << "\nexpected, with status " << status << ":\n"
           << testing::PrintToString(std::string(output)) << "\nstandard error:\n"
           << end.errors;
}

testing::AssertionResult isRefused(const ProgramEnd& end, std::string_view message) {
    return endedWith(end, refusedStatus, expectedRefusal(message));
}

testing::AssertionResult isAnsweredText(const ProgramEnd& end, std::string_view body) {
    return endedWith(end, 0, expectedText(body));
}

testing::AssertionResult isAnsweredJson(const ProgramEnd& end, std::string_view body) {
    return endedWith(end, 0, expectedJson(body));
}

std::string answeredSignature(const ProgramEnd& end) {
    const std::string body = responseBody(end.output);
    EXPECT_TRUE(isAnsweredText(end, body));
    return body;
}
