// Property: whatever a body holds and CONTENT_LENGTH announces, the JSON reader accepts it exactly
// when a second parser, written rule by rule after RFC 8259, does and finds an object whose known
// members have their types; the record is then the same. Impossible lengths raise
// std::length_error, and nothing else leaves the reader.
//
// Input: a line for CONTENT_LENGTH ("=" is the true length, "-" leaves it unset), then the body.

#include <stdexcept>

#include "frontend/json_input.h"
#include "fuzz/property.h"
#include "fuzz/reference_form.h"
#include "fuzz/reference_json.h"
#include "fuzz/request_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const RawRequest request = announcedBody(input);
    const std::uint64_t announced = referenceDecimal(request.contentLength.value_or("0"));
    if (announced > longestAnnounced && announced < impossibleLength) {
        return 0;
    }

    RequestRecord record;
    bool filled = false;
    bool raised = false;
    try {
        filled = fillRecordFromJson(record, RawRequestSource(request)) == RequestFault::none;
    } catch (const std::length_error&) {
        raised = true;
    }
    require(raised == (announced >= impossibleLength), "only impossible lengths raise");
    if (raised) {
        return 0;
    }

    std::string body = request.body;
    // What is announced and does not arrive counts as zero bytes.
    body.resize(request.body.empty() ? 0 : announced);
    const std::optional<RequestRecord> expected = referenceJsonRecord(body);
    require(filled == expected.has_value(), "both parsers accept or both refuse");
    require(!filled || sameRecord(record, *expected), "the record is the second parser's");
    return 0;
}
