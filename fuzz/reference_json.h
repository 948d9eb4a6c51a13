#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "frontend/request_record.h"

// The JSON reader once more: a parser of its own after RFC 8259, one function for each rule.

/// The number that a value of CONTENT_LENGTH announces for a JSON body, modulo 2^64.
std::uint64_t referenceDecimal(const std::string& text);

/// The record of a body, given with the zero bytes in the place of what did not arrive; empty when
/// it is refused.
std::optional<RequestRecord> referenceJsonRecord(const std::string& body);
