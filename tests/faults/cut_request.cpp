#include "tests/faults/cut_request.h"

#include <algorithm>
#include <map>

namespace {

/// The bytes of percent-encoded text; an escape that lost digits stands for those that it has.
std::string decoded(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes.push_back(text[i]);
            continue;
        }
        const std::string digits(text.substr(i + 1, 2));
        bytes.push_back(digits.empty() ? '\0' : static_cast<char>(std::stoi(digits, nullptr, 16)));
        i += 2;
    }
    return bytes;
}

/// The parameters of form text; of a piece without "=", none.
std::map<std::string, std::string> parametersOf(std::string_view text) {
    std::map<std::string, std::string> parameters;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, text.find('&'));
        const std::size_t equals = piece.find('=');
        if (equals != std::string_view::npos) {
            parameters[decoded(piece.substr(0, equals))] = decoded(piece.substr(equals + 1));
        }
        text.remove_prefix(std::min(piece.size() + 1, text.size()));
    }
    return parameters;
}

WholeRequest refused(WholeRequest request, std::string_view message) {
    request.status = "400 Bad Request";
    request.contentType = "text/plain";
    request.answer = message;
    request.ending.clear();
    request.data.clear();
    request.refusals.clear();
    return request;
}

/// As the file system takes a path.
std::string pathOf(const std::string& value) {
    return value.substr(0, value.find('\0'));
}

/// What is signed when the whole of it did not come; empty if there is nothing to sign.
std::string signedData(const WholeRequests& requests, const WholeRequest& request,
                       std::map<std::string, std::string>& parameters) {
    if (pathOf(parameters["project"]) != requests.project()) {
        return {};
    }
    if (!parameters["sig_file"].empty()) {
        return pathOf(parameters["sig_file"]) == requests.file() ? request.data : std::string();
    }
    // The only base64 of the requests stands before the word that tells so.
    return parameters["sig_data_encoding"] == "base64" ? request.data : parameters["sig_data"];
}

WholeRequest cutSigning(const WholeRequests& requests, WholeRequest request,
                        std::map<std::string, std::string>& parameters) {
    request.data = signedData(requests, request, parameters);
    if (request.data.empty()) {
        return refused(request, "Signature generation failed");
    }
    request.refusals.clear();
    return request;
}

WholeRequest cutVerifying(WholeRequest request, std::map<std::string, std::string>& parameters) {
    const bool named = request.answer.starts_with("valid:");
    const bool stillNamed = parameters.contains("genpairs") && parameters["genpairs"] != "false";
    request.answer = named && stillNamed ? "valid:false" : "false";
    request.refusals.clear();
    return request;
}

}  // namespace

WholeRequest cutRequest(const WholeRequests& requests, const WholeRequest& request,
                        std::size_t length) {
    if (request.kind == InputKind::json) {
        return refused(request, "Invalid JSON data");
    }
    if (length == 0) {
        return refused(request, "Failed to parse input data");
    }
    std::map<std::string, std::string> parameters = parametersOf(request.body.substr(0, length));
    const bool verifies = parameters["sig_verify"] == "true";
    if (!verifies && parameters["sig_create"] != "true") {
        return refused(request, "'mode' parameter missing or invalid");
    }
    if (parameters["project"].empty()) {
        return refused(request, "'project' parameter is required");
    }
    if (verifies && parameters["sig"].empty()) {
        return refused(request, "'signature' parameter is required");
    }
    if (parameters["sig_data"].empty() && parameters["sig_file"].empty()) {
        return refused(request, "Either 'data' or 'file' parameter is required");
    }
    return verifies ? cutVerifying(request, parameters) : cutSigning(requests, request, parameters);
}
