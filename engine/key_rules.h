#pragma once

#include "project/project_key_record.h"

// What must be there of a key before anything is computed with it, and the first fault that stands
// against that.

/// Why an attribute, one of the four, gives no coordinate: only a value that states the degree of
/// the curve's field is one at all. That it belongs to a point of the curve is taken for granted.
KeyReport coordinateFault(const ProjectKeyRecord& record, ProjectAttributeId id);

/// Why a key does not sign: for its scalar, its public point, or the base point's coordinates. The
/// base point comes only with a complete key, so one without a public point cannot sign. The degree
/// of the public point does not matter for signing.
KeyReport signingFault(const ProjectKeyRecord& record);

/// Why a key does not verify: for its public point, then for the coordinates of both points.
KeyReport verifyingFault(const ProjectKeyRecord& record);
