#pragma once

#include <cstdint>

#include "frontend/request_record.h"

/// Fills the record from the JSON object in the request's body. False, with the record partly
/// filled, when the body is absent or short, holds a zero byte, is no JSON object, or has a known
/// member of a wrong type; a `signature` member that is no object is skipped.
///
/// A CONTENT_LENGTH that is negative or beyond any string raises std::length_error.
bool fillRecordFromJson(RequestRecord& record);

/// The number written in `text`: an optional sign, digits, and nothing else; any other text gives
/// 0. A number out of range wraps around.
std::int64_t parseDecimal(const char* text);
