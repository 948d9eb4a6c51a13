#include "tools/request/request_words.h"

#include "tools/counted_text.h"
#include "tools/request/quoted_text.h"

bool isRefusedReading(RequestFault fault) {
    return fault >= RequestFault::formLengthUnset && fault <= RequestFault::jsonMemory;
}

std::vector<std::string> lengthRemarks(const RawRequest& request, std::uint64_t length) {
    std::vector<std::string> remarks;
    if (request.contentLength != std::to_string(length)) {
        remarks.push_back("CONTENT_LENGTH is " + quotation(*request.contentLength) +
                          " and counts as " + std::to_string(length));
    }
    if (length < request.body.size()) {
        remarks.push_back("CONTENT_LENGTH announces " + std::to_string(length) + " of the body's " +
                          counted(request.body.size(), "byte") + ": the rest is not read");
    }
    return remarks;
}
