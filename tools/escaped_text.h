#pragma once

#include <string>
#include <string_view>

// Text that somebody else has chosen, such as the name of a file, on a terminal.

/// The text, in which no byte can steer a terminal or end a line: control characters (U+0000 to
/// U+001F and U+007F to U+009F) and bytes of no well-formed UTF-8 (Unicode 15.0, table 3-7) are
/// written as `appendEscape` does. Everything else stands as it is.
std::string escaped(std::string_view text);

/// Appends "\x" and the two upper-case hexadecimal digits of the byte.
void appendEscape(std::string& result, char byte);
