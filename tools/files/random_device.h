#pragma once

#include <optional>
#include <string>
#include <vector>

/// Why nothing that must stay secret can be made here, when none of these devices gives bytes: the
/// generator would take the clock alone, as sign.cgi does, and say nothing.
std::optional<std::string> randomDeviceRefusal(const std::vector<const char*>& devices = {
                                                   "/dev/urandom", "/dev/random"});
