#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

// What is wrong with the arguments, beyond what the parser itself refuses, and in words.

/// The word with a mark in front if the parser might take it for more than a word: it splits
/// "[a,b]" for an operand that may be repeated, and ends a command at "++".
std::string marked(const std::string& word);

/// The word without the mark.
std::string unmarked(const std::string& word);

/// Throws a `CLI::ParseError` if an option of the command that takes one value is given more than
/// once.
void refuseRepetition(const CLI::App& command);

/// Throws one if an argument says "--option=" and no more: the parser would take the next argument
/// for its value.
void refuseEmptyValues(const std::vector<std::string>& arguments);

/// Whether this first argument is neither a command nor an option, so that the list of commands
/// helps most.
bool namesNoCommand(const CLI::App& app, const std::string& first);

/// An error in one line: what is wrong, the usage where an operand is missing or too many, and the
/// help that tells more, which is that of the command that the first argument names. Surplus
/// arguments come first, since one may be the misspelt form of what is missing; a command or an
/// option that is not known is named with the nearest that is.
std::string argumentError(const CLI::App& app, const std::string& first,
                          const CLI::ParseError& error);
