#pragma once

#include "tests/support/project_builder.h"

/// The bytes of a project with these attributes, damaged in one of many ways or not at all.
Bytes damagedProject(const AttributeValues& attributes);
