#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

// What projectctl says: results on standard output, everything else on standard error. Messages and
// lines hold names that anybody may have chosen, so that they are written `escaped`
// (tools/escaped_text.h), here and nowhere else.

/// "projectctl: MESSAGE" and a line feed.
std::string messageLine(const std::string& message);

/// Writes `messageLine` to standard error and returns `exitFailed`.
int reportFailure(const std::string& message);

/// Writes `messageLine` to standard error; the command goes on.
void reportRemark(const std::string& message);

/// Writes these bytes, which the program itself has chosen, to standard error as they stand.
void reportText(const std::string& text);

/// Writes a line, and the line feed behind it, to standard output.
void printLine(const std::string& line);

/// Writes these bytes to standard output as they stand. A failure shows in `flushOutput`.
void printText(const std::string& text);

/// The value in one line of ASCII without an end. Bytes that are no UTF-8 are replaced by U+FFFD.
std::string jsonText(const nlohmann::ordered_json& value);

/// Writes the value so on a line of standard output.
void printJson(const nlohmann::ordered_json& value);

/// Whether standard output is a terminal, which shows no bytes but those of text.
bool isOutputTerminal();

/// Whether all that was printed went out; says so on standard error if not.
bool flushOutput();
