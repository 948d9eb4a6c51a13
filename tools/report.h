#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

// What projectctl says: results on standard output, everything else on standard error.

/// Says "projectctl: MESSAGE" on standard error and returns `exitFailed`.
int reportFailure(const std::string& message);

/// Says "projectctl: MESSAGE" on standard error; the command goes on.
void reportRemark(const std::string& message);

/// Writes the text to standard output. A failure shows in `flushOutput`.
void printText(const std::string& text);

/// Writes the value on one line of standard output. Bytes that are no UTF-8 are replaced by U+FFFD.
void printJson(const nlohmann::ordered_json& value);

/// Whether all that was printed went out; says so on standard error if not.
bool flushOutput();
