#pragma once

#include <cstddef>
#include <cstdint>

/// One run of a target over these bytes; libFuzzer and the replay of a corpus call it. Always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the process, with the property's name on standard error, when the property does not hold.
void require(bool holds, const char* property);
