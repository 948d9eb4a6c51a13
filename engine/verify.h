#pragma once

#include <cstddef>
#include <cstdint>

#include "curve/curve_domain.h"
#include "project/project_file.h"

// The steps of `verifyData` behind the loading of the project.

/// Whether the text verifies under the key of a loaded project.
bool verifyWithRecord(const ProjectFile& project, const std::uint8_t* data, std::uint32_t length,
                      const char* signature);

/// Characters of the longest text that is read.
inline constexpr std::size_t longestSignatureText = 128;

/// Bytes of two numbers below the order, which has 163 bits.
inline constexpr std::uint64_t longestSignature = 42;

/// Whether the text verifies under these points.
///
/// False for a text that is empty, of incomplete groups or longer than `longestSignatureText`, or
/// that stands for more than `longestSignature` bytes or an odd number of them. Each half is read
/// least significant byte first and may be padded with zeros at its high end. Texts are not
/// compared: whatever decodes to the same halves is accepted, characters outside the alphabet
/// included, which count as "A".
bool checkSignatureText(const std::uint8_t* data, std::uint32_t length,
                        const core::CurvePoint& publicPoint, const core::CurvePoint& base,
                        const char* signature);
