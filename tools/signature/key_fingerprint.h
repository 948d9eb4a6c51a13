#pragma once

#include <optional>
#include <string>

#include "project/project_file.h"

/// What tells public keys apart: the 64 hexadecimal digits of the SHA-256 digest (FIPS 180-4) of
/// the key in DER, as `exportPublicKey` has it, so that other software finds the same. A project
/// and its copy that only verifies have the same one. Nothing for a key that is refused there.
std::optional<std::string> keyFingerprint(const ProjectFile& project);
