#pragma once

#include "project/project_file.h"
#include "tools/commands/verify_command.h"

/// Verifies the signatures of `options.list` under a loaded project, and prints for each file, in
/// the order of the list, whether its signature is valid, and whether it could be read. Warnings,
/// with counts, stand behind that on standard error; with one that is not valid, the fingerprint of
/// the key, to compare it between machines.
///
/// Gives `exitNegative` if a signature is not valid; `exitFailed` if otherwise a file or a line
/// could not be read, or no file was verified.
int verifyList(const VerifyOptions& options, const ProjectFile& project);
