#include "tests/faults/whole_request.h"

#include <algorithm>

#include "tests/support/signature_text.h"

namespace {

using Operation = SignRequest::Operation;
using Pairs = SignRequest::Pairs;

constexpr const char* textType = "text/plain";
constexpr const char* jsonType = "application/json";

/// Base64 of `base64Data`, which is decoded with one zero byte more.
constexpr const char* base64Text = "QUJDREVG";
constexpr std::string_view base64Data("ABC\0DEF", 7);

Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string plainData() {
    return "data of a whole request";
}

/// Three pages, the last not full.
std::string fileData() {
    std::string content;
    while (content.size() < 10000) {
        content.append("line ").append(std::to_string(content.size())).append("\n");
    }
    return content;
}

FirstLine firstLineOf(std::string_view program) {
    return program == clientProgram ? FirstLine::forClient : FirstLine::forServer;
}

const char* unreadableBody(InputKind kind) {
    return kind == InputKind::json ? "Invalid JSON data" : "Failed to parse input data";
}

std::string verdictText(const SignRequest& request, bool json, bool verdict) {
    const std::string word = verdict ? "true" : "false";
    if (json) {
        return "{\"valid\":" + word + "}";
    }
    return request.pairs == Pairs::on ? "valid:" + word : word;
}

bool answersInJson(InputKind kind, const SignRequest& request) {
    return request.encoding.empty() ? kind == InputKind::json : request.encoding == "json";
}

std::string refusal(std::string_view program, std::string_view message) {
    return expectedResponse(firstLineOf(program), "400 Bad Request", textType, message);
}

}  // namespace

std::string WholeRequest::response(std::string_view content) const {
    return expectedResponse(firstLineOf(program), status, contentType, content);
}

WholeRequests::WholeRequests() : key_(randomProjectKey()) {
    folder_.write("project", projectBytes(keyAttributes(key_)));
    folder_.write("file", bytesOf(fileData()));
    addAllSigning();
    addAllVerifying();
    addAllRefused();
}

const WholeRequest& WholeRequests::named(const std::string& name) const {
    return *std::find_if(requests_.begin(), requests_.end(),
                         [&](const WholeRequest& request) { return request.name == name; });
}

WholeRequest& WholeRequests::add(std::string name, InputKind kind, std::string body,
                                 std::string_view program) {
    WholeRequest request{
        .name = std::move(name), .kind = kind, .program = program, .body = std::move(body)};
    request.refusals[refusal(program, unreadableBody(kind))] = refusedStatus;
    return requests_.emplace_back(std::move(request));
}

WholeRequest& WholeRequests::addSigning(std::string name, InputKind kind,
                                        const SignRequest& request, std::string_view program) {
    WholeRequest& added = add(std::move(name), kind, bodyText(kind, request), program);
    added.data = request.file.empty() ? plainData() : fileData();
    if (request.dataEncoding == "base64") {
        added.data = base64Data;
    }
    if (answersInJson(kind, request)) {
        added.contentType = jsonType;
        added.answer = "{\"signature\":\"";
        added.ending = "\"}";
    } else if (request.pairs == Pairs::on) {
        added.answer = "signature:";
    }
    added.refusals[refusal(program, "Signature generation failed")] = refusedStatus;
    return added;
}

WholeRequest& WholeRequests::addVerifying(std::string name, InputKind kind, SignRequest request,
                                          bool verdict, std::string_view program) {
    Bytes data = bytesOf(request.file.empty() ? plainData() : fileData());
    if (request.dataEncoding == "base64") {
        data = bytesOf(base64Data);
    }
    if (!verdict) {
        data.back() ^= 1;
    }
    request.operation = Operation::verify;
    request.signature = signatureText(judgeSign(key_, data));
    WholeRequest& added = add(std::move(name), kind, bodyText(kind, request), program);
    const bool json = answersInJson(kind, request);
    added.contentType = json ? jsonType : textType;
    added.answer = verdictText(request, json, verdict);
    added.refusals[added.response(verdictText(request, json, false))] = 0;
    return added;
}

void WholeRequests::addRefused(std::string name, InputKind kind, std::string body,
                               std::string_view message) {
    WholeRequest& added = add(std::move(name), kind, std::move(body));
    added.status = "400 Bad Request";
    added.answer = message;
}

void WholeRequests::addAllSigning() {
    const SignRequest data{.project = project(), .data = plainData()};
    const SignRequest file{.project = project(), .file = this->file()};
    SignRequest encoded{.project = project(), .encoding = "json", .data = base64Text};
    encoded.dataEncoding = "base64";
    SignRequest named = file;
    named.pairs = Pairs::on;
    named.encoding = "plain";
    addSigning("sign data, form", InputKind::form, data);
    addSigning("sign data, JSON", InputKind::json, data);
    addSigning("sign base64, form", InputKind::form, encoded);
    addSigning("sign file, form", InputKind::form, file);
    addSigning("sign file, JSON", InputKind::json, named);
    addSigning("sign data, nph", InputKind::form, data, clientProgram);
}

void WholeRequests::addAllVerifying() {
    const SignRequest data{.project = project(), .data = plainData()};
    const SignRequest file{.project = project(), .file = this->file()};
    SignRequest encoded{.project = project(), .data = base64Text};
    encoded.dataEncoding = "base64";
    SignRequest named = file;
    named.pairs = Pairs::on;
    addVerifying("verify data true, form", InputKind::form, data, true);
    addVerifying("verify base64 true, JSON", InputKind::json, encoded, true);
    addVerifying("verify data false, form", InputKind::form, data, false);
    addVerifying("verify data false, JSON", InputKind::json, data, false);
    addVerifying("verify file true, form", InputKind::form, named, true);
    addVerifying("verify file false, JSON", InputKind::json, file, false);
    addVerifying("verify data true, nph", InputKind::json, data, true, clientProgram);
}

void WholeRequests::addAllRefused() {
    const SignRequest missing{.project = folder_.file("missing"), .data = plainData()};
    addRefused("project missing, JSON", InputKind::json, bodyText(InputKind::json, missing),
               "Signature generation failed");
    addRefused("mode missing, form", InputKind::form, "project=p&sig_data=d",
               "'mode' parameter missing or invalid");
    addRefused("no JSON", InputKind::json, "{\"mode\":", "Invalid JSON data");
}
