#include "fuzz/reference_form.h"

#include <algorithm>
#include <array>
#include <ios>
#include <limits>
#include <sstream>
#include <tuple>

namespace {

char extractedByte(const std::string& digits) {
    std::istringstream stream(digits);
    int value = 0;
    stream >> std::hex >> value;
    return static_cast<char>(value);
}

/// The byte that two bytes, one or none behind a "%" stand for. All are extracted at the first
/// call: making a stream takes longer than all else.
char escapedByte(const std::string& digits) {
    static const std::array<std::string, 3> bytes = [] {
        std::array<std::string, 3> made;
        made[0] = extractedByte("");
        for (int first = 0; first < 256; ++first) {
            const std::string one(1, static_cast<char>(first));
            made[1] += extractedByte(one);
            for (int second = 0; second < 256; ++second) {
                made[2] += extractedByte(one + static_cast<char>(second));
            }
        }
        return made;
    }();
    std::size_t index = 0;
    for (const char digit : digits) {
        index = 256 * index + static_cast<unsigned char>(digit);
    }
    return bytes.at(digits.size())[index];
}

std::string valueOf(const std::map<std::string, std::string>& parameters, const char* name) {
    const auto found = parameters.find(name);
    return found == parameters.end() ? "" : found->second;
}

}  // namespace

std::uint64_t referenceLength(const std::string& text) {
    std::istringstream stream(text);
    std::uint64_t value = 0;
    stream >> value;
    return value;
}

std::string referenceFormDecode(const std::string& text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            decoded += escapedByte(text.substr(i + 1, 2));
            i += 2;
        } else {
            decoded += text[i] == '+' ? ' ' : text[i];
        }
    }
    return decoded;
}

std::map<std::string, std::string> referenceFormPairs(const std::string& text) {
    std::map<std::string, std::string> parameters;
    const std::string ended = text + '&';
    std::size_t start = 0;
    for (std::size_t end = ended.find('&'); end < ended.size(); end = ended.find('&', start)) {
        const std::string piece = ended.substr(start, end - start);
        const std::size_t equals = piece.find('=');
        if (equals < piece.size()) {
            parameters[referenceFormDecode(piece.substr(0, equals))] =
                referenceFormDecode(piece.substr(equals + 1));
        }
        start = end + 1;
    }
    return parameters;
}

std::optional<std::string> referenceFormText(const std::optional<std::string>& announced,
                                             const std::string& body) {
    const std::uint64_t length = announced.has_value() ? referenceLength(*announced) : 0;
    if (length == 0 || length == std::numeric_limits<std::uint64_t>::max() || body.empty()) {
        return std::nullopt;
    }
    const std::string arrived = body.substr(0, length);
    return arrived.substr(0, arrived.find('\0'));
}

TextEncoding referenceEncoding(const std::string& word) {
    static const std::map<std::string, std::uint32_t> values = {
        {"plain", 1}, {"base64", 2}, {"urlencode", 3}, {"json", 4}};
    const auto found = values.find(word);
    return static_cast<TextEncoding>(found == values.end() ? 0 : found->second);
}

RequestRecord referenceFormRecord(const std::map<std::string, std::string>& parameters) {
    RequestRecord record;
    record.project = valueOf(parameters, "project");
    if (valueOf(parameters, "sig_verify") == "true") {
        record.mode = RequestMode::verifySignature;
    } else if (valueOf(parameters, "sig_create") == "true") {
        record.mode = RequestMode::generateSignature;
    }
    record.encoding = referenceEncoding(valueOf(parameters, "encoding"));
    record.genPairs =
        parameters.count("genpairs") == 1 && valueOf(parameters, "genpairs") != "false";
    record.signatureData = valueOf(parameters, "sig_data");
    record.signatureDataEncoding = referenceEncoding(valueOf(parameters, "sig_data_encoding"));
    record.signatureFile = valueOf(parameters, "sig_file");
    record.signature = valueOf(parameters, "sig");
    return record;
}

bool sameRecord(const RequestRecord& a, const RequestRecord& b) {
    const auto fields = [](const RequestRecord& record) {
        return std::tie(record.project, record.mode, record.encoding, record.genPairs,
                        record.signatureData, record.signatureDataEncoding, record.signatureFile,
                        record.signature);
    };
    return fields(a) == fields(b);
}
