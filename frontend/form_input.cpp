#include "frontend/form_input.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "frontend/hexadecimal_digit.h"
#include "frontend/request_body.h"

namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

/// Removes what stream extraction accepts in front of a number; true when that was a "-".
bool skipToDigits(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return negative;
}

/// The byte that the digits behind a "%" stand for.
char decodedByte(std::string_view digits) {
    const bool negative = skipToDigits(digits);
    std::uint32_t value = 0;
    for (const char digit : digits) {
        const std::optional<std::uint8_t> digitValue = hexadecimalValue(digit);
        if (!digitValue.has_value()) {
            break;
        }
        value = value << 4 | *digitValue;
    }
    return static_cast<char>(negative ? 0 - value : value);
}

RequestFault readBody(FormParameters& parameters, const RequestSource& source) {
    if (source.contentLength == nullptr) {
        return RequestFault::formLengthUnset;
    }
    const std::uint64_t length = parseContentLength(source.contentLength);
    if (length == 0) {
        return RequestFault::formLengthZero;
    }
    if (length == std::numeric_limits<std::uint64_t>::max()) {
        return RequestFault::formLengthRange;
    }
    const RequestBody body = readRequestBody(source.body, length);
    if (body.received == 0) {
        return RequestFault::formBodyEmpty;
    }
    parseFormPairs(parameters, formText({body.bytes.get(), body.received}));
    return RequestFault::none;
}

RequestFault readQueryString(FormParameters& parameters, const char* query) {
    if (query == nullptr || *query == '\0') {
        return RequestFault::formBodyEmpty;
    }
    std::string_view text = query;
    if (text.size() > 1 && text.starts_with('"') && text.ends_with('"')) {
        text.remove_prefix(1);
        text.remove_suffix(1);
    }
    parseFormPairs(parameters, text);
    return RequestFault::none;
}

}  // namespace

RequestFault readFormParameters(FormParameters& parameters, const RequestSource& source,
                                bool fromBody) {
    parameters.clear();
    return fromBody ? readBody(parameters, source)
                    : readQueryString(parameters, source.queryString);
}

std::string_view formText(std::string_view body) {
    return body.substr(0, body.find('\0'));
}

std::uint64_t parseContentLength(std::string_view text) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    const bool negative = skipToDigits(text);
    std::uint64_t value = 0;
    for (const char character : text) {
        if (character < '0' || character > '9') {
            break;
        }
        const auto digit = static_cast<std::uint64_t>(character - '0');
        if (value > (largest - digit) / 10) {
            return largest;
        }
        value = 10 * value + digit;
    }
    return negative ? 0 - value : value;
}

void parseFormPairs(FormParameters& parameters, std::string_view text) {
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, text.find('&'));
        const std::size_t equals = piece.find('=');
        if (equals != std::string_view::npos) {
            parameters.insert_or_assign(formDecode(piece.substr(0, equals)),
                                        formDecode(piece.substr(equals + 1)));
        }
        text.remove_prefix(std::min(piece.size() + 1, text.size()));
    }
}

std::string formDecode(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '+') {
            decoded.push_back(' ');
        } else if (text[i] == '%') {
            decoded.push_back(decodedByte(text.substr(i + 1, 2)));
            i += 2;
        } else {
            decoded.push_back(text[i]);
        }
    }
    return decoded;
}

std::string getFormString(const FormParameters& parameters, const std::string& name) {
    const auto found = parameters.find(name);
    return found == parameters.end() ? std::string() : found->second;
}

bool getFormBool(const FormParameters& parameters, const std::string& name) {
    const auto found = parameters.find(name);
    return found != parameters.end() && found->second != "false";
}

bool fillRecordFromForm(const FormParameters& parameters, RequestRecord& record) {
    record.project = getFormString(parameters, "project");
    record.mode = RequestMode::none;
    if (getFormString(parameters, "sig_create") == "true") {
        record.mode = RequestMode::generateSignature;
    }
    if (getFormString(parameters, "sig_verify") == "true") {
        record.mode = RequestMode::verifySignature;
    }
    record.encoding = parseTextEncoding(getFormString(parameters, "encoding"));
    record.genPairs = getFormBool(parameters, "genpairs");
    record.signatureData = getFormString(parameters, "sig_data");
    record.signatureDataEncoding =
        parseTextEncoding(getFormString(parameters, "sig_data_encoding"));
    record.signatureFile = getFormString(parameters, "sig_file");
    record.signature = getFormString(parameters, "sig");
    return true;
}
