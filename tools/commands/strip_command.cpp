#include "tools/commands/strip_command.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <optional>
#include <vector>

#include "core/entry.h"
#include "project/project_key_record.h"
#include "tools/exit_status.h"
#include "tools/project/attribute_meaning.h"
#include "tools/project/project_reading.h"
#include "tools/project/project_writer.h"
#include "tools/report.h"

namespace {

/// The scalar's bytes, least significant first, without zero bytes at the top.
std::vector<std::uint8_t> scalarBytes(const ProjectFile& project) {
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    if (!record.hasPrivateScalar()) {
        return {};
    }
    const core::CoreInteger& scalar = *record.privateScalar;
    std::vector<std::uint8_t> bytes(coreEntry::integerByteLength(scalar));
    std::memcpy(bytes.data(), scalar.limbs.data(), bytes.size());
    return bytes;
}

/// The attribute other than the scalar that holds the scalar's bytes, if there is one. Fewer bytes
/// than a limb tell nothing: they may stand anywhere.
std::optional<ProjectAttributeId> copyOfScalar(const ProjectFile& project) {
    constexpr std::size_t tellingSize = 8;
    const std::vector<std::uint8_t> scalar = scalarBytes(project);
    if (scalar.size() < tellingSize) {
        return std::nullopt;
    }
    for (const ProjectAttributeId id : project.attributeIds()) {
        const std::vector<std::uint8_t> value = project.getBytes(id);
        if (id != privateScalarAttribute &&
            std::search(value.begin(), value.end(), scalar.begin(), scalar.end()) != value.end()) {
            return id;
        }
    }
    return std::nullopt;
}

}  // namespace

int stripCommand(const StripOptions& options) {
    ProjectReading reading = readProject(options.file);
    if (reading.refusal.has_value()) {
        return reportFailure(options.file + ": " + reading.refusal->text);
    }
    if (const auto id = copyOfScalar(reading.project)) {
        return reportFailure(options.file + ": " + namedAttribute(*id) +
                             " holds the private scalar too");
    }
    reading.project.eraseAttribute(privateScalarAttribute);
    if (reading.project.attributes.empty()) {
        return reportFailure(options.file + ": holds no attribute but the private scalar, if any");
    }
    if (const auto failure = writeProjectFile(reading.project, options.output)) {
        return reportFailure(*failure);
    }
    return exitDone;
}
