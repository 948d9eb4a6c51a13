#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frontend/request_record.h"
#include "tools/request/explanation.h"
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

/// A request as the program reads it.
struct RequestReading {
    /// How the program answers when the request makes no record.
    std::optional<Explanation> refusal{};

    RequestRecord record{};
    RequestNames names{};
    TextEncoding defaultEncoding = TextEncoding::none;  ///< of the result
    std::string encodingWord{};                         ///< as the request writes it
    std::string dataEncodingWord{};                     ///< as the request writes it
    std::string missingMode{};   ///< why no operation is selected, if none is
    std::string missingInput{};  ///< why there is neither data nor file, if that has a reason
    std::vector<std::string> remarks{};
};

/// Reads the request by `readFormParameters` and `fillRecordFromForm`.
RequestReading readFormRequest(const RawRequest& request);

/// Reads the request by `fillRecordFromJson`.
RequestReading readJsonRequest(const RawRequest& request);
