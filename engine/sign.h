#pragma once

#include <cstdint>

#include "core/core_integer.h"
#include "curve/curve_domain.h"
#include "project/project_file.h"
#include "project/project_key_record.h"

// The steps of `signData` behind the loading of the project.

/// Signs under the key of a loaded project; `data` and `signature` as in `signData`. `key`
/// tells what stands against it, if anything does.
bool signWithRecord(const ProjectFile& project, const std::uint8_t* data, std::uint32_t length,
                    char* signature, KeyReport& key);

/// `signWithRecord` of the bytes whose RIPEMD-160 digest, 20 bytes as published, this is.
bool signDigestWithRecord(const ProjectFile& project, const std::uint8_t* digest, char* signature,
                          KeyReport& key);

/// Signs with these key values and writes the text as `writeSignatureText` does. Where the base
/// point yields no signature, it writes nothing.
void renderSignature(const std::uint8_t* data, std::uint32_t length,
                     const core::CoreInteger& scalar, const core::CurvePoint& point,
                     char* signature);
