#pragma once

#include <cstdint>

#include "frontend/request_record.h"
#include "frontend/request_rules.h"
#include "frontend/request_source.h"

struct JsonNotes;

/// Fills a fresh record from the JSON object in the request's body. Refused, with the record partly
/// filled, when the body is absent or short, holds a zero byte, is no JSON object, or has a known
/// member of a wrong type, and when there is no memory to read it; a `signature` member that is no
/// object is skipped. Of several members of one name the last counts.
///
/// Takes four times the length of the body and 0.6 MiB of memory at most, the body itself among it,
/// whatever the body holds, unless `notes` are wanted too.
///
/// CONTENT_LENGTH is read by `parseDecimal`. A negative or very large one raises what
/// `readRequestBody` raises.
RequestFault fillRecordFromJson(RequestRecord& record, const RequestSource& source,
                                JsonNotes* notes = nullptr);

/// The number written in `text`: an optional sign, digits, and nothing else; any other text gives
/// 0. A number out of range wraps around.
std::int64_t parseDecimal(const char* text);
