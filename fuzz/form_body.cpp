// Property: whatever a body holds and CONTENT_LENGTH announces, the form reader finds the
// parameters, and fills the record, that a slow reader does which cuts the text piece by piece and
// has the standard stream extract the numbers. It refuses what has no form text, raises
// std::length_error from 2^63 - 1 announced bytes on, and takes no byte behind those announced.
//
// Input: a line for CONTENT_LENGTH ("=" is the true length, "-" leaves it unset), then the body.

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "frontend/form_input.h"
#include "fuzz/property.h"
#include "fuzz/reference_form.h"
#include "fuzz/request_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    const RawRequest request = announcedBody(input);
    const std::uint64_t announced = referenceLength(request.contentLength.value_or(""));
    const bool noText = announced == std::numeric_limits<std::uint64_t>::max();
    if (announced > longestAnnounced && announced < impossibleLength) {
        return 0;
    }

    const RawRequestSource source(request);
    FormParameters parameters = {{"of an earlier call", "value"}};
    bool found = false;
    bool raised = false;
    try {
        found = readFormParameters(parameters, source, true) == RequestFault::none;
    } catch (const std::length_error&) {
        raised = true;
    }
    require(raised == (announced >= impossibleLength && !noText), "only impossible lengths raise");
    if (raised) {
        return 0;
    }

    const std::size_t taken = noText ? 0 : std::min(request.body.size(), announced);
    require(std::ftell(RequestSource(source).body) == static_cast<long>(taken),
            "what is announced is taken, and no more");
    const auto text = referenceFormText(request.contentLength, request.body);
    require(found == text.has_value(), "a form text is found where there is one");
    const auto expected = referenceFormPairs(text.value_or(""));
    require(parameters == expected, "the parameters are those of the slow reader");
    RequestRecord record;
    record.mode = RequestMode::verifySignature;
    require(fillRecordFromForm(parameters, record), "every form fills a record");
    require(sameRecord(record, referenceFormRecord(expected)), "the record is the slow reader's");
    return 0;
}
