#pragma once

#include <string>

// A file that another process cuts while it is read through a mapping: reading what it has lost
// raises SIGBUS.

/// From now on SIGBUS ends the process with `exitFailed` and a message.
void reportCutFile();

/// Names the file of that message, as far as there is room for it.
void nameReadFile(const std::string& name);

/// "NAME: was cut while it was read".
std::string cutFileMessage(const std::string& name);
