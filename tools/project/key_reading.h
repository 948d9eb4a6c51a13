#pragma once

#include <optional>

#include "project/project_file.h"
#include "tools/refusal.h"

// Why a loaded project cannot be used, by the rules that the engine applies before it computes
// anything. Each refusal names the attribute that it comes from; nothing when the key can be used.

/// For signing: the scalar, the public point, then the base point.
std::optional<Refusal> signingRefusal(const ProjectFile& project);

/// For verifying: the public point, then the four coordinates.
std::optional<Refusal> verifyingRefusal(const ProjectFile& project);

/// Why an attribute gives no coordinate of the curve's field.
std::optional<Refusal> coordinateRefusal(const ProjectFile& project, ProjectAttributeId id);

/// Why the private scalar counts as absent or zero.
std::optional<Refusal> scalarRefusal(const ProjectFile& project);
