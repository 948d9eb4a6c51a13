#pragma once

#include <cstdint>

#include "curve/curve_domain.h"
#include "project/project_file.h"
#include "project/project_key_record.h"

// The steps of `verifyData` behind the loading of the project.

/// Whether the text verifies under the key of a loaded project. `key` tells what stands against the
/// key, if anything does.
bool verifyWithRecord(const ProjectFile& project, const std::uint8_t* data, std::uint32_t length,
                      const char* signature, KeyReport& key);

/// `verifyWithRecord` of the bytes whose RIPEMD-160 digest, 20 bytes as published, this is.
bool verifyDigestWithRecord(const ProjectFile& project, const std::uint8_t* digest,
                            const char* signature, KeyReport& key);

/// Whether the text verifies under these points. False for a text with a fault.
bool checkSignatureText(const std::uint8_t* data, std::uint32_t length,
                        const core::CurvePoint& publicPoint, const core::CurvePoint& base,
                        const char* signature);
