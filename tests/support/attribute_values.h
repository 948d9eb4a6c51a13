#pragma once

#include "project/project_file.h"
#include "project/project_key_record.h"
#include "tests/support/project_builder.h"

/// A table of these values.
inline ProjectFile projectOf(const AttributeValues& values) {
    ProjectFile file;
    for (const auto& [id, value] : values) {
        file.insertAttribute(id, value);
    }
    return file;
}

/// The key record that these values fill.
inline ProjectKeyRecord recordOf(const AttributeValues& values) {
    ProjectKeyRecord record;
    record.loadFromAttributes(projectOf(values));
    return record;
}

/// The values of a table, copied.
inline AttributeValues valuesOf(const ProjectFile& file) {
    AttributeValues values;
    for (const ProjectAttribute& attribute : file.attributes()) {
        values.try_emplace(attribute.id, attribute.value.begin(), attribute.value.end());
    }
    return values;
}
