#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

#include "tests/support/project_builder.h"

/// A kind of project file that is made to cost its reader as much as can be: a directory of as many
/// entries as there is room for.
struct HostileProject {
    const char* name;
    /// Entry `number`, from 0, of a file of so many bytes.
    ImageEntry (*entry)(std::uint32_t number, std::uint32_t fileSize);
    bool hasRepeatedIds = false;
};

inline std::ostream& operator<<(std::ostream& stream, const HostileProject& project) {
    return stream << project.name;
}

/// All kinds. None has an id below 100 but where the kind is of one id, which is 7.
const std::vector<HostileProject>& hostileProjects();

/// The bytes of such a file, `size` in all and with a true digest. The entries of `last`, which are
/// sound, stand behind all others.
Bytes hostileBytes(const HostileProject& kind, std::size_t size, const AttributeValues& last);
