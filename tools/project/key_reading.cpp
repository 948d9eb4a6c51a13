#include "tools/project/key_reading.h"

#include <utility>

#include "engine/key_rules.h"
#include "tools/counted_text.h"
#include "tools/project/attribute_meaning.h"
#include "tools/project/project_reading.h"
#include "tools/rules.h"

namespace {

std::string wordsOf(const KeyReport& report) {
    const std::string name = namedAttribute(report.attribute);
    const std::string allowed = std::to_string(report.allowed);
    switch (report.fault) {
        case KeyFault::absent:
            return name + " is absent" +
                   (report.attribute == privateScalarAttribute
                        ? "; a project without it only verifies"
                        : "");
        case KeyFault::tooLarge:
            return name + " has " + counted(report.found, "byte") + ", of which at most " +
                   allowed + " are taken, and counts as absent";
        case KeyFault::tooManyBits:
            return name + " states " + counted(report.found, "bit") + ", has room for " + allowed +
                   ", and counts as absent";
        case KeyFault::zeroScalar:
            return name + " is zero";
        case KeyFault::noBits:
            return name + " states 0 bits";
        case KeyFault::bitsDiffer:
            return "attributes 75 and 76 (the public point) state different numbers of bits, " +
                   allowed + " and " + std::to_string(report.found);
        default:
            return name + " states " + counted(report.found, "bit") + " instead of " + allowed;
    }
}

}  // namespace

std::optional<Refusal> keyRefusal(const KeyReport& report) {
    if (report.fault == KeyFault::none) {
        return std::nullopt;
    }
    return refusalBy(report.fault, wordsOf(report));
}

std::optional<Refusal> signingRefusal(const ProjectFile& project) {
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    return keyRefusal(signingFault(record));
}

std::optional<Refusal> verifyingRefusal(const ProjectFile& project) {
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    return keyRefusal(verifyingFault(record));
}

std::optional<std::string> loadUsableProject(
    const std::string& path, std::optional<Refusal> (*keyRefusal)(const ProjectFile&),
    ProjectFile& project) {
    ProjectReading reading = readProject(path);
    if (!reading.refusal.has_value()) {
        reading.refusal = keyRefusal(reading.project);
    }
    if (reading.refusal.has_value()) {
        return path + ": " + reading.refusal->text;
    }
    project = std::move(reading.project);
    return std::nullopt;
}
