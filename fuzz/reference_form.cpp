#include "fuzz/reference_form.h"

#include <algorithm>
#include <ios>
#include <limits>
#include <sstream>
#include <tuple>

namespace {

/// Making a stream takes longer than all else, so one serves for every number.
std::istringstream& streamOver(const std::string& text) {
    static std::istringstream stream;
    stream.clear();
    stream.str(text);
    return stream;
}

char extractedByte(const std::string& digits) {
    int value = 0;
    streamOver(digits) >> std::hex >> value;
    return static_cast<char>(value);
}

std::string valueOf(const std::map<std::string, std::string>& parameters, const char* name) {
    const auto found = parameters.find(name);
    return found == parameters.end() ? "" : found->second;
}

}  // namespace

std::uint64_t referenceLength(const std::string& text) {
    std::uint64_t value = 0;
    streamOver(text) >> std::dec >> value;
    return value;
}

std::string referenceFormDecode(const std::string& text) {
    std::string decoded;
    std::string rest = text;
    while (!rest.empty()) {
        const char first = rest.front();
        std::size_t used = 1;
        if (first == '%') {
            decoded += extractedByte(rest.substr(1, 2));
            used = std::min<std::size_t>(3, rest.size());
        } else {
            decoded += first == '+' ? ' ' : first;
        }
        rest.erase(0, used);
    }
    return decoded;
}

std::map<std::string, std::string> referenceFormPairs(const std::string& text) {
    std::map<std::string, std::string> parameters;
    std::istringstream pieces(text);
    for (std::string piece; std::getline(pieces, piece, '&');) {
        const std::size_t equals = piece.find('=');
        if (equals < piece.size()) {
            parameters[referenceFormDecode(piece.substr(0, equals))] =
                referenceFormDecode(piece.substr(equals + 1));
        }
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
