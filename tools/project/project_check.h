#pragma once

#include <optional>
#include <string>
#include <vector>

#include "project/project_file.h"
#include "tools/project/project_finding.h"

/// What there is to say of a project.
struct ProjectCheck {
    std::optional<std::string> unjudged;  ///< why the file could not be read, in words
    std::vector<ProjectFinding> findings;
    bool verifiesOnly = false;  ///< there is no private scalar, which is no finding
    ProjectFile project;        ///< what was checked; empty if it could not be loaded

    bool isSound() const { return !unjudged.has_value() && findings.empty(); }
};

/// Proves the project at `path` sound, or finds what is not. What a finding makes meaningless is
/// not looked at: a damaged file has no attributes, a point off the curve no order. The core must
/// have been started.
///
/// Sound is a file that loads, holds each attribute once, and has
/// - coordinates of degree 163, reduced, in the 32 bytes that they take;
/// - points on the curve, other than infinity and the point with x = 0, of order n (SEC 1 version
///   2.0, section 3.2.2.1);
/// - no scalar, or one from 1 to n - 1 under its true bit length, of which the public point is the
///   product with the base point;
/// - protection against others (tools/project/project_protection.h).
///
/// Of attributes that stand there more than once, the first hundred are found one by one, and their
/// number if there are more.
ProjectCheck checkProject(const std::string& path);

/// What `checkProject` finds in the key of a loaded project.
std::vector<ProjectFinding> checkKey(const ProjectFile& project);

/// The first of these with a damage, in words that follow the path and a colon: values that are not
/// sound or do not belong together.
std::optional<std::string> unsoundKey(const ProjectFile& project);
