#pragma once

#include <optional>
#include <string_view>

#include "tools/request/explanation.h"

/// Why `base64Decode` refuses this text; nothing when it does not. Characters count from 1.
std::optional<Ruling> base64Refusal(std::string_view text);
