#include "tools/request/request_explanation.h"

#include <new>
#include <stdexcept>
#include <utility>

#include "frontend/request_driver.h"
#include "tools/files/cut_file.h"
#include "tools/request/engine_remarks.h"
#include "tools/request/fault_reasons.h"
#include "tools/request/quoted_text.h"
#include "tools/rules.h"

namespace {

void append(std::vector<std::string>& remarks, std::vector<std::string> more) {
    remarks.insert(remarks.end(), std::make_move_iterator(more.begin()),
                   std::make_move_iterator(more.end()));
}

/// A remark on a word that is no encoding, in whose place a default stands.
void remarkDefault(const std::string& name, const std::string& word, const char* byDefault,
                   std::vector<std::string>& remarks) {
    if (!word.empty() && parseTextEncoding(word) == TextEncoding::none) {
        remarks.push_back(name + " is " + quotation(word) +
                          ", which is not a known word: the default applies, " +
                          quotation(byDefault));
    }
}

/// The body of the response; a signature in it is another one each time.
std::string bodyOf(const Response& response, const RequestRun& run) {
    std::string body(response.body.text, response.body.length);
    if (!run.signature.empty()) {
        body.replace(body.find(run.signature), run.signature.size(), signaturePlaceholder);
    }
    return body;
}

Explanation explanationOf(const Refusal& ruling, const Response& response, const RequestRun& run) {
    return {.rule = ruling.code,
            .reason = ruling.text,
            .status = response.status,
            .body = bodyOf(response, run)};
}

/// The answer to a request whose record is read.
Explanation explainRun(const RequestRun& run, const Response& response, RequestWords words) {
    Explanation explanation = explanationOf(recordRuling(run, words), response, run);
    explanation.remarks = std::move(words.remarks);
    if (run.fault != RequestFault::noMode && run.fault != RequestFault::noProject) {
        remarkDefault(words.names.encoding, words.encoding, run.isJson ? "json" : "urlencode",
                      explanation.remarks);
        remarkDefault(words.names.dataEncoding, words.dataEncoding, "plain", explanation.remarks);
    }
    if (run.fault == RequestFault::none || run.fault == RequestFault::generation) {
        append(explanation.remarks, engineRemarks(run, words.names));
    }
    return explanation;
}

Explanation explainRequest(const RawRequest& request, RequestRun& run) {
    const Response response = answerRequest(RawRequestSource(request), run);
    RequestWords words = run.isJson ? jsonWords(request, run) : formWords(request, run);
    if (!isRefusedReading(run.fault)) {
        return explainRun(run, response, std::move(words));
    }
    Explanation explanation = explanationOf(readingRefusal(request, run), response, run);
    explanation.remarks = std::move(words.remarks);
    return explanation;
}

/// The end of the process without a response.
Explanation silence(const Cause& cause, const std::string& reason) {
    return {.rule = ruleOf(cause).code, .reason = reason};
}

/// Such a body as the request announces is beyond every string or beyond the memory.
Explanation silenceOfBody(const RawRequest& request, Outcome outcome, const char* why) {
    return silence(outcome, "CONTENT_LENGTH is " + quotation(request.contentLength.value_or("")) +
                                why + ": the program ends by SIGABRT without a response");
}

Explanation silenceOfProject(const RequestRun& run) {
    return silence(Verdict::projectMemory, "there is not enough memory for the project " +
                                               quotation(beforeZero(run.record.project)) +
                                               " with the data");
}

}  // namespace

Explanation explainRequest(const RawRequest& request) {
    JsonNotes notes;
    RequestRun run;
    run.notes = &notes;
    try {
        return explainRequest(request, run);
    } catch (const std::length_error&) {
        return silenceOfBody(
            request, run.isJson ? Outcome::jsonLengthImpossible : Outcome::formLengthImpossible,
            ", which counts as 2^63 - 1 bytes or more");
    } catch (const std::bad_alloc&) {
        if (run.isRead) {
            return silenceOfProject(run);
        }
        return silenceOfBody(request,
                             run.isJson ? Outcome::jsonLengthMemory : Outcome::formLengthMemory,
                             ", and there is no memory for such a body");
    }
}

Explanation explainRecord(const RequestRecord& record, RequestWords words) {
    RequestRun run;
    run.record = record;
    nameReadFile(beforeZero(record.signatureFile));
    try {
        const Response response = answerRecord(run, TextEncoding::plain);
        return explainRun(run, response, std::move(words));
    } catch (const std::bad_alloc&) {
        return silenceOfProject(run);
    }
}
