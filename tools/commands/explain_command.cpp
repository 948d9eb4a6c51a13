#include "tools/commands/explain_command.h"

#include <new>
#include <nlohmann/json.hpp>

#include "tools/exit_status.h"
#include "tools/files/file_content.h"
#include "tools/files/input_file.h"
#include "tools/files/random_device.h"
#include "tools/report.h"
#include "tools/request/request_explanation.h"
#include "tools/rules.h"

namespace {

/// What the program answers to the record that the options make.
Explanation explainOptions(const ExplainOptions& options) {
    const std::string dataEncoding = options.dataEncoding.value_or("");
    const RequestRecord record{.project = options.project.value_or(""),
                               .mode = options.signature.has_value()
                                           ? RequestMode::verifySignature
                                           : RequestMode::generateSignature,
                               .signatureData = options.data.value_or(""),
                               .signatureDataEncoding = parseTextEncoding(dataEncoding),
                               .signatureFile = options.file.value_or(""),
                               .signature = options.signature.value_or("")};
    return explainRecord(record, {.names = {.project = "--project",
                                            .data = "--data",
                                            .dataEncoding = "--data-encoding",
                                            .file = "--file",
                                            .signature = "--signature"},
                                  .dataEncoding = dataEncoding});
}

Explanation explainBody(const ExplainOptions& options, std::string body) {
    RawRequest request{options.contentType, options.contentLength, std::move(body)};
    if (!options.contentLength.has_value() && !options.noContentLength) {
        request.contentLength = std::to_string(request.body.size());
    }
    return explainRequest(request);
}

void printExplanation(const Explanation& explanation) {
    printLine(explanation.status.empty()
                  ? "The program ends without a response."
                  : "The program answers " + explanation.status + ": " + explanation.body);
    printLine("Rule " + explanation.rule + ": " + explanation.reason + ".");
    for (const std::string& remark : explanation.remarks) {
        printLine("Note: " + remark + ".");
    }
}

void printExplanationJson(const Explanation& explanation) {
    nlohmann::ordered_json value;
    if (explanation.status.empty()) {
        value["status"] = nullptr;
        value["body"] = nullptr;
    } else {
        value["status"] = explanation.status;
        value["body"] = explanation.body;
    }
    value["rule"] = explanation.rule;
    value["reason"] = explanation.reason;
    value["remarks"] = explanation.remarks;
    printJson(value);
}

int listRules(bool json) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Rule& rule : rules()) {
        if (json) {
            list.push_back(
                {{"code", rule.code}, {"sentence", rule.sentence}, {"page", pageOf(rule)}});
        } else {
            printLine(std::string(rule.code) + ": " + rule.sentence);
        }
    }
    if (json) {
        printJson(list);
    }
    return exitDone;
}

}  // namespace

int explainCommand(const ExplainOptions& options) {
    if (options.rules) {
        return listRules(options.json);
    }
    std::string body;
    if (options.body.has_value()) {
        try {
            if (const std::optional<std::string> failure = readContent(*options.body, body)) {
                return reportFailure(*failure);
            }
        } catch (const std::bad_alloc&) {
            return reportFailure(inputName(*options.body) + ": there is not enough memory");
        }
    }
    // A request that signs would wait with the program for a writer of the FIFO.
    if (const RandomDeviceFault fault = randomDeviceFault();
        fault == RandomDeviceFault::fifo && !options.signature.has_value()) {
        return reportFailure(*randomDeviceRefusal(fault));
    }
    const Explanation explanation =
        options.body.has_value() ? explainBody(options, std::move(body)) : explainOptions(options);
    options.json ? printExplanationJson(explanation) : printExplanation(explanation);
    return exitDone;
}
