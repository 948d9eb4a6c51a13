#include "frontend/json_input.h"

#include <cstddef>
#include <cstring>
#include <exception>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "frontend/json_members.h"
#include "frontend/request_body.h"

namespace {

using nlohmann::json;

/// A place in a body, for the parser. It is a type of this file, so that what is defined below for
/// the parser of these concerns no other.
class BodyPlace {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    explicit BodyPlace(const char* byte) : byte_(byte) {}

    reference operator*() const { return *byte_; }
    BodyPlace& operator++() {
        ++byte_;
        return *this;
    }
    bool operator==(const BodyPlace&) const = default;

private:
    const char* byte_;
};

using BodyLexer =
    nlohmann::detail::lexer<json, nlohmann::detail::iterator_input_adapter<BodyPlace>>;

}  // namespace

/// A member of the parser's own lexer, as version 3.11 of the library has it.
///
/// The text for an error's message: all that was read since the last string or number began. The
/// parser writes each line feed in it as eight bytes and holds it several times over, which makes
/// forty times a hostile body. Nobody reads these messages.
template <>
std::string BodyLexer::get_token_string() const {
    return {};
}

RequestFault fillRecordFromJson(RequestRecord& record, const RequestSource& source,
                                JsonNotes* notes) {
    if (source.contentLength == nullptr) {
        return RequestFault::jsonLengthUnset;
    }
    const std::int64_t length = parseDecimal(source.contentLength);
    if (length == 0) {
        return RequestFault::jsonLengthZero;
    }
    const RequestBody body = readRequestBody(source.body, static_cast<std::uint64_t>(length));
    // The bytes that did not arrive are zero bytes of the body, and no JSON text holds one. The
    // parser alone would take one behind the value for the end of its input.
    if (body.received < body.length) {
        return RequestFault::jsonBodyShort;
    }
    if (std::memchr(body.bytes.get(), '\0', body.length) != nullptr) {
        return RequestFault::jsonZeroByte;
    }
    try {
        JsonMembers members(record, notes);
        const char* start = body.bytes.get();
        json::sax_parse(BodyPlace(start), BodyPlace(start + body.length), &members);
        return members.fault();
    } catch (const std::exception&) {
        return RequestFault::jsonMemory;
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
