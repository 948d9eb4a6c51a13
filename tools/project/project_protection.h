#pragma once

#include <string>
#include <vector>

#include "tools/project/project_finding.h"

/// What lets others than root and whoever asks (the effective user) read the private scalar of the
/// project at `path`, or put other bytes in its place:
///
/// - "owner": the file belongs to neither of them;
/// - "permissions": others may write to the file or, with a private scalar in it, use it at all;
///   the group may read one that root owns, since whoever serves the project reads it so;
/// - "folder": a folder above the file belongs neither to them nor to the file's owner, or others
///   may write to it, unless it is sticky, where each only removes what is their own.
///
/// The folders are those of the path as it is given and those of where its links lead. Mode bits
/// are looked at alone, which for an access list show the most that it grants. What cannot be
/// looked at is passed over.
std::vector<ProjectFinding> checkProtection(const std::string& path, bool holdsScalar);
