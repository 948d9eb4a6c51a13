#pragma once

#include <string>

#include "engine/signature_engine.h"
#include "frontend/base64_decoder.h"
#include "frontend/json_notes.h"
#include "frontend/request_record.h"
#include "frontend/request_rules.h"

/// One run: the request's record, and what it meets on its way to the response. The program looks
/// at the response alone; the rest is for whoever explains one.
struct RequestRun {
    RequestRecord record;
    JsonNotes* notes = nullptr;  ///< filled from JSON, if somebody wants them
    bool isJson = false;         ///< it was read as JSON, and else as a form
    bool isRead = false;         ///< it has been read, as far as it could be

    RequestFault fault = RequestFault::none;  ///< the first rule that the request breaks
    Base64Decoding base64;                    ///< of the data
    EngineReport engine;                      ///< empty if it is not asked
    std::string signature;                    ///< that is made
    bool isValid = false;                     ///< the verdict
    std::string result;                       ///< text of a success
};
