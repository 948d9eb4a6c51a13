// Property: a project file of any bytes, and the same file with its magic and its MD5 digest put
// right, loads exactly when a slow reader over the bytes in memory accepts it, with the same
// attributes, and has a fault in its directory exactly when that reader finds one there. What was
// in the table before is gone either way, and the path that is kept is the one told at
// `ProjectFile::loadReporting`. Sealing a loaded file changes the count of entries and the digest
// and nothing else.

#include <cstdio>

#include "fuzz/memory_file.h"
#include "fuzz/property.h"
#include "project/project_file.h"
#include "tests/support/attribute_values.h"
#include "tests/support/reference_project.h"

namespace {

constexpr int projectDescriptor = 60;

/// The path kept by a table that was populated before, or not, and had the path "before".
std::string keptPath(const ReferenceProject& reading, bool populated, const std::string& path) {
    if (!reading.attributes.empty()) {
        return path;
    }
    return populated || reading.directoryRefused ? "" : "before";
}

/// Loads the file into a table that was populated before, or not.
ProjectFile checkLoad(const MemoryFile& file, const Bytes& bytes, bool populated) {
    file.write(bytes);
    ProjectFile project;
    project.path = "before";
    if (populated) {
        project.insertAttribute(7, {1});
    }
    const ProjectFault fault = project.loadReporting(file.path().c_str()).fault;
    const ReferenceProject expected = referenceProject(bytes);
    require((fault == ProjectFault::none) == expected.loaded, "both accept or both refuse");
    require((fault >= ProjectFault::directory) == expected.directoryRefused,
            "both refuse the directory or both something in front of it");
    require(valuesOf(project) == expected.attributes, "the attributes are the slow reader's");
    for (const auto& [id, value] : expected.attributes) {
        require(project.getBytes(id) == value, "each attribute is found");
    }
    require(project.path == keptPath(expected, populated, file.path()), "the path is kept or not");
    return project;
}

/// Seals the file that the project was loaded from.
void checkSeal(const MemoryFile& file, const Bytes& bytes, const ProjectFile& project) {
    std::FILE* stream = std::fopen(file.path().c_str(), "r+b");
    require(stream != nullptr, "the file in memory opens");
    require(project.sealHeader(stream), "a loaded file can be sealed");
    require(std::fclose(stream) == 0, "the file in memory closes");

    Bytes expected = bytes;
    for (std::size_t i = 0; i < 4; ++i) {
        expected[4 + i] = static_cast<std::uint8_t>(project.attributes().size() >> 8 * i);
    }
    require(file.content() == mendedProject(expected), "sealing writes the header alone");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFile file(projectDescriptor);
    const Bytes bytes(data, data + size);
    checkLoad(file, bytes, size % 2 == 1);
    const Bytes mended = mendedProject(bytes);
    const ProjectFile project = checkLoad(file, mended, size % 2 == 0);
    if (!project.isEmpty()) {
        checkSeal(file, mended, project);
    }
    return 0;
}
