#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "frontend/request_record.h"

// The form reader once more, with the standard stream's own extraction of numbers.

/// The number that stream extraction reads at the start of a text; out of range, the largest.
std::uint64_t referenceLength(const std::string& text);

std::string referenceFormDecode(const std::string& text);

std::map<std::string, std::string> referenceFormPairs(const std::string& text);

/// The text of a form whose body is announced by this value of CONTENT_LENGTH, if there is one;
/// empty when the request has no form text.
std::optional<std::string> referenceFormText(const std::optional<std::string>& announced,
                                             const std::string& body);

RequestRecord referenceFormRecord(const std::map<std::string, std::string>& parameters);

/// The encoding of this name.
TextEncoding referenceEncoding(const std::string& word);

bool sameRecord(const RequestRecord& a, const RequestRecord& b);
