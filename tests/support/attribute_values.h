#pragma once

#include "project/project_file.h"
#include "tests/support/project_builder.h"

/// The values of a table, copied.
inline AttributeValues valuesOf(const ProjectFile& file) {
    AttributeValues values;
    for (const ProjectAttribute& attribute : file.attributes()) {
        values.try_emplace(attribute.id, attribute.value.begin(), attribute.value.end());
    }
    return values;
}
