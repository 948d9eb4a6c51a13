#pragma once

#include <functional>
#include <string>

// A file that another process cuts while it is read through a mapping: reading what it has lost
// raises SIGBUS.

/// What is said of such a file, behind its name.
inline constexpr const char* cutFileWords = "was cut while it was read";

/// From now on SIGBUS ends the process with `exitFailed` and a message.
void reportCutFile();

/// Calls `read`, and returns whether it came to its end. Once SIGBUS is reported, it is left where
/// it reads what a file has lost, and the process goes on: nothing that `read` calls may own
/// anything at that time. Several threads may each read something.
bool readUncut(const std::function<void()>& read);

/// Names the file of that message.
void nameReadFile(const std::string& name);
