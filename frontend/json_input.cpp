#include "frontend/json_input.h"

#include <cstdlib>
#include <cstring>
#include <exception>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "frontend/request_body.h"

namespace {

using nlohmann::json;

RequestMode parseMode(std::string_view word) {
    if (word == "generateSignature") {
        return RequestMode::generateSignature;
    }
    if (word == "verifySignature") {
        return RequestMode::verifySignature;
    }
    return RequestMode::none;
}

std::string stringMember(const json& object, const char* name) {
    return object.value(name, std::string());
}

void fillSignatureMembers(const json& signature, RequestRecord& record) {
    record.signatureData = stringMember(signature, "data");
    record.signatureDataEncoding = parseTextEncoding(stringMember(signature, "encoding"));
    record.signatureFile = stringMember(signature, "file");
    record.signature = stringMember(signature, "signature");
}

void fillMembers(const json& object, RequestRecord& record) {
    record.project = stringMember(object, "project");
    record.mode = parseMode(stringMember(object, "mode"));
    record.encoding = parseTextEncoding(stringMember(object, "encoding"));
    record.genPairs = object.value("genPairs", false);
    const auto signature = object.find("signature");
    if (signature != object.end() && signature->is_object()) {
        fillSignatureMembers(*signature, record);
    }
}

}  // namespace

bool fillRecordFromJson(RequestRecord& record) {
    const char* announced = std::getenv("CONTENT_LENGTH");
    const std::int64_t length = announced == nullptr ? 0 : parseDecimal(announced);
    if (length == 0) {
        return false;
    }
    const RequestBody body = readRequestBody(static_cast<std::uint64_t>(length));
    // The bytes that did not arrive are zero bytes of the body, and no JSON text holds one. The
    // parser alone would take one behind the value for the end of its input.
    if (std::memchr(body.bytes.get(), '\0', body.length) != nullptr) {
        return false;
    }
    try {
        const json value = json::parse(body.bytes.get(), body.bytes.get() + body.length);
        if (!value.is_object()) {
            return false;
        }
        fillMembers(value, record);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::int64_t parseDecimal(const char* text) {
    const bool negative = *text == '-';
    if (negative || *text == '+') {
        ++text;
    }
    // Unsigned, where a number out of range wraps around.
    std::uint64_t value = 0;
    for (; *text != '\0'; ++text) {
        if (*text < '0' || *text > '9') {
            return 0;
        }
        value = 10 * value + static_cast<std::uint64_t>(*text - '0');
    }
    return static_cast<std::int64_t>(negative ? 0 - value : value);
}
