#pragma once

#include <string>
#include <vector>

#include "frontend/request_run.h"
#include "tools/request/raw_request.h"

/// What the parts of a record are called where the request is written.
struct RequestNames {
    std::string project{};
    std::string encoding{};
    std::string data{};
    std::string dataEncoding{};
    std::string file{};
    std::string signature{};
};

/// What a request says that does not reach its record.
struct RequestWords {
    RequestNames names{};
    std::string encoding{};      ///< the word for it, as the request writes it
    std::string dataEncoding{};  ///< the word for it
    std::string missingMode{};   ///< why no operation is selected, if none is
    std::string missingInput{};  ///< why there is neither data nor file, if that has a reason
    std::vector<std::string> remarks{};
};

/// The words of a form, once the program has read it.
RequestWords formWords(const RawRequest& request, const RequestRun& run);

/// The words of JSON, once the program has read it and made notes.
RequestWords jsonWords(const RawRequest& request, const RequestRun& run);

/// Whether this fault stopped the reading of a request, so that there is no record.
bool isRefusedReading(RequestFault fault);

/// Remarks on a length that is set and counts as `length`: how it counts, and a body that has more
/// bytes.
std::vector<std::string> lengthRemarks(const RawRequest& request, std::uint64_t length);
