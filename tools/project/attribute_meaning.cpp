#include "tools/project/attribute_meaning.h"

#include "project/project_key_record.h"

std::string attributeMeaning(ProjectAttributeId id) {
    switch (id) {
        case basePointXAttribute:
            return "x of the base point";
        case basePointYAttribute:
            return "y of the base point";
        case privateScalarAttribute:
            return "private scalar";
        case publicPointXAttribute:
            return "x of the public point";
        case publicPointYAttribute:
            return "y of the public point";
        default:
            return {};
    }
}

std::string namedAttribute(ProjectAttributeId id) {
    const std::string meaning = attributeMeaning(id);
    return "attribute " + std::to_string(id) + (meaning.empty() ? "" : " (" + meaning + ")");
}
