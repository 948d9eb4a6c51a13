#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "frontend/form_input.h"
#include "frontend/hexadecimal_digit.h"
#include "tools/counted_text.h"
#include "tools/request/quoted_text.h"
#include "tools/request/request_words.h"

namespace {

bool isKnown(std::string_view name) {
    return std::find(formParameterNames.begin(), formParameterNames.end(), name) !=
           formParameterNames.end();
}

std::string marked(std::string_view name) {
    return std::string(1, '\'').append(name) + '\'';
}

/// The text that the parser gets.
std::string_view textOf(const RawRequest& request, std::uint64_t length) {
    const std::string_view body = request.body;
    return formText(body.substr(0, length));
}

/// Characters of a "%" with its two digits.
constexpr std::size_t escapeSize = 3;

bool isEscape(std::string_view text) {
    return text.size() == escapeSize && std::all_of(text.begin() + 1, text.end(), [](char digit) {
               return hexadecimalValue(digit).has_value();
           });
}

/// A remark on the first "%" of a pair that two hexadecimal digits do not follow. A known name has
/// none of these, and no plus sign either.
std::optional<std::string> escapeRemark(std::string_view name, std::string_view pair) {
    for (std::size_t at = pair.find('%'); at != std::string_view::npos;
         at = pair.find('%', at + escapeSize)) {
        const std::string_view escape = pair.substr(at, escapeSize);
        if (!isEscape(escape)) {
            return quotation(escape) + " in " + marked(name) +
                   " is not a \"%\" with two hexadecimal digits, so it stands for the byte " +
                   quotation(formDecode(escape));
        }
    }
    return std::nullopt;
}

/// A remark on a plus sign where the value is in an alphabet that has one and no space.
std::optional<std::string> plusRemark(std::string_view name, std::string_view pair,
                                      const RequestRecord& record) {
    const bool base64 = name == "sig_data" && record.signatureDataEncoding == TextEncoding::base64;
    if ((name != "sig" && !base64) || pair.find('+') == std::string_view::npos) {
        return std::nullopt;
    }
    return "\"+\" in " + marked(name) + " stands for a space; a plus sign is written \"%2B\"";
}

/// What the pieces of the text hold that makes no difference, or another than one may think. Of
/// each name the first remark of a kind is kept: a hostile text has millions.
struct PieceRemarks {
    enum class Kind : std::uint8_t { noValue, escape, plus };

    std::set<std::pair<std::string, Kind>> made;
    std::map<std::string, std::uint64_t> occurrences;
    std::vector<std::string> unknown;  ///< the first of them
    std::uint64_t unknownCount = 0;
    std::vector<std::string> remarks;

    void add(std::string_view piece, const RequestRecord& record) {
        FormParameters pair;
        parseFormPairs(pair, piece);
        if (pair.empty()) {
            addWithoutValue(formDecode(piece));
            return;
        }
        const std::string& name = pair.begin()->first;
        if (!isKnown(name)) {
            constexpr std::uint64_t most = 3;
            if (++unknownCount <= most) {
                unknown.push_back(name);
            }
            return;
        }
        ++occurrences[name];
        addFirst(name, Kind::escape, escapeRemark(name, piece));
        addFirst(name, Kind::plus, plusRemark(name, piece, record));
    }

    void addWithoutValue(const std::string& name) {
        if (isKnown(name)) {
            addFirst(name, Kind::noValue, marked(name) + " has no \"=\" and counts as absent");
        }
    }

    void addFirst(const std::string& name, Kind kind, std::optional<std::string> remark) {
        if (remark.has_value() && made.emplace(name, kind).second) {
            remarks.push_back(std::move(*remark));
        }
    }

    void finish() {
        for (const auto& [name, count] : occurrences) {
            if (count > 1) {
                remarks.push_back(marked(name) + " is given " + counted(count, "time") +
                                  ", and the last one counts");
            }
        }
        if (unknownCount != 0) {
            remarks.push_back(unknownNames("parameter", unknown, unknownCount));
        }
    }
};

std::vector<std::string> pieceRemarks(std::string_view text, const RequestRecord& record) {
    PieceRemarks pieces;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, text.find('&'));
        pieces.add(piece, record);
        text.remove_prefix(std::min(piece.size() + 1, text.size()));
    }
    pieces.finish();
    return pieces.remarks;
}

/// A remark on 'genpairs' where it is on and looks off.
void remarkPairs(const FormParameters& parameters, std::vector<std::string>& remarks) {
    constexpr auto looksOff =
        std::to_array<std::string_view>({"", "0", "no", "off", "False", "FALSE"});
    const std::string word = getFormString(parameters, "genpairs");
    if (parameters.contains("genpairs") &&
        std::find(looksOff.begin(), looksOff.end(), word) != looksOff.end()) {
        remarks.push_back(
            "'genpairs' is " + quotation(word) +
            ", which turns it on: only exactly \"false\" and leaving it out turn it off");
    }
}

/// Why neither operation is selected.
std::string missingOperation(const FormParameters& parameters) {
    if (parameters.empty()) {
        return "the form holds no parameter, and so neither 'sig_create' nor 'sig_verify'";
    }
    std::string given;
    for (const char* name : {"sig_create", "sig_verify"}) {
        if (parameters.contains(name)) {
            given += (given.empty() ? "" : ", ") + marked(name) + " is " +
                     quotation(getFormString(parameters, name));
        }
    }
    return given.empty() ? "neither 'sig_create' nor 'sig_verify' is given"
                         : given + "; only exactly \"true\" selects it";
}

void remarkBody(const RawRequest& request, std::uint64_t length,
                std::vector<std::string>& remarks) {
    for (std::string& remark : lengthRemarks(request, length)) {
        remarks.push_back(std::move(remark));
    }
    if (request.body.size() < length) {
        remarks.push_back("the body ends after " + std::to_string(request.body.size()) +
                          " of the " + counted(length, "byte") + " announced, which a form allows");
    }
    const std::size_t textLength = textOf(request, length).size();
    if (textLength < std::min<std::uint64_t>(length, request.body.size())) {
        remarks.push_back("byte " + std::to_string(textLength + 1) +
                          " of the body is a zero byte, so the form ends before it");
    }
}

void remarkType(const RawRequest& request, std::vector<std::string>& remarks) {
    if (request.contentType.has_value() && request.contentType->find("json") != std::string::npos) {
        remarks.push_back(
            "CONTENT_TYPE is " + quotation(*request.contentType) +
            ": only exactly \"application/json\" is JSON, and this is read as a form");
    } else if (request.body.starts_with('{')) {
        remarks.emplace_back(
            "the body looks like JSON, but is read as a form: for JSON, CONTENT_TYPE must be "
            "exactly \"application/json\"");
    }
}

}  // namespace

RequestWords formWords(const RawRequest& request, const RequestRun& run) {
    RequestWords words{.names = {.project = "'project'",
                                 .encoding = "'encoding'",
                                 .data = "'sig_data'",
                                 .dataEncoding = "'sig_data_encoding'",
                                 .file = "'sig_file'",
                                 .signature = "'sig'"}};
    remarkType(request, words.remarks);
    if (isRefusedReading(run.fault)) {
        return words;
    }
    const std::uint64_t length = parseContentLength(*request.contentLength);
    FormParameters parameters;
    parseFormPairs(parameters, textOf(request, length));
    words.encoding = getFormString(parameters, "encoding");
    words.dataEncoding = getFormString(parameters, "sig_data_encoding");
    words.missingMode = missingOperation(parameters);
    remarkBody(request, length, words.remarks);
    if (getFormString(parameters, "sig_create") == "true" &&
        getFormString(parameters, "sig_verify") == "true") {
        words.remarks.emplace_back(
            "'sig_create' and 'sig_verify' are both \"true\", and verifying wins");
    }
    remarkPairs(parameters, words.remarks);
    for (std::string& remark : pieceRemarks(textOf(request, length), run.record)) {
        words.remarks.push_back(std::move(remark));
    }
    return words;
}
