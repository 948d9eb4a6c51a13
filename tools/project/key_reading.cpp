#include "tools/project/key_reading.h"

#include <string>

#include "engine/key_rules.h"
#include "tools/counted_text.h"
#include "tools/project/attribute_meaning.h"

std::optional<Refusal> keyRefusal(const KeyReport& report) {
    const std::string name = namedAttribute(report.attribute);
    const std::string allowed = std::to_string(report.allowed);
    switch (report.fault) {
        case KeyFault::absent:
            return Refusal{"key.absent", name + " is absent"};
        case KeyFault::tooLarge:
            return Refusal{"key.too-large", name + " has " + counted(report.found, "byte") +
                                                ", of which at most " + allowed +
                                                " are taken, and counts as absent"};
        case KeyFault::tooManyBits:
            return Refusal{"key.too-many-bits", name + " states " + counted(report.found, "bit") +
                                                    ", has room for " + allowed +
                                                    ", and counts as absent"};
        case KeyFault::zeroScalar:
            return Refusal{"key.zero-scalar", name + " is zero"};
        case KeyFault::noBits:
            return Refusal{"key.no-bits", name + " states 0 bits"};
        case KeyFault::bitsDiffer:
            return Refusal{
                "key.bits-differ",
                "attributes 75 and 76 (the public point) state different numbers of bits, " +
                    allowed + " and " + std::to_string(report.found)};
        case KeyFault::degree:
            return Refusal{"key.degree", name + " states " + counted(report.found, "bit") +
                                             " instead of " + allowed};
        case KeyFault::none:
            break;
    }
    return std::nullopt;
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
