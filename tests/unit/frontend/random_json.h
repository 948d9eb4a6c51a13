#pragma once

#include <string>

/// The text of a JSON request with all that can be odd in one: members repeated, out of place and
/// of other types, names with escapes, numbers and characters at the limits, damaged bytes. More
/// than half of the texts fill a record.
std::string randomJsonRequest();
