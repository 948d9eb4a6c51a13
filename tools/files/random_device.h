#pragma once

#include <optional>
#include <string>

#include "random/random_device.h"

/// Why nothing that must stay secret can be made here, and what to do about it, in a line; nothing
/// when there is no fault. The generator itself would go on, as sign.cgi does, and say nothing.
std::optional<std::string> randomDeviceRefusal(RandomDeviceFault fault = randomDeviceFault());

/// The same for whoever makes no secret here yet, as a remark on a project that signs.
std::optional<std::string> randomDeviceRemark(RandomDeviceFault fault = randomDeviceFault());
