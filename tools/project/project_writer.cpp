#include "tools/project/project_writer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "project/project_key_record.h"
#include "tools/files/whole_file.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& bytes, const void* data, std::size_t size) {
    bytes.resize(bytes.size() + size);
    std::memcpy(bytes.data() + bytes.size() - size, data, size);
}

void appendWord(Bytes& bytes, std::size_t value) {
    const auto word = static_cast<std::uint32_t>(value);
    append(bytes, &word, sizeof word);
}

/// Header, directory and values, the header of an empty project for now.
Bytes projectImage(const ProjectFile& project) {
    constexpr std::size_t headerSize = sizeof(ProjectFileHeader);
    constexpr std::size_t entrySize = 12;
    std::vector<ProjectAttributeId> ids = project.attributeIds();
    std::sort(ids.begin(), ids.end());

    Bytes image(headerSize);
    std::size_t offset = headerSize + entrySize * ids.size();
    for (const ProjectAttributeId id : ids) {
        appendWord(image, id);
        appendWord(image, offset);
        appendWord(image, project.attributeSize(id));
        offset += project.attributeSize(id);
    }
    for (const ProjectAttributeId id : ids) {
        const Bytes value = project.getBytes(id);
        append(image, value.data(), value.size());
    }
    return image;
}

}  // namespace

std::optional<std::string> writeProjectFile(const ProjectFile& project, const std::string& path) {
    const bool secret = project.attributeSize(privateScalarAttribute) != 0;
    const Bytes image = projectImage(project);
    return writeWholeFile(path, secret ? FileAudience::owner : FileAudience::everybody,
                          [&](std::FILE* stream) {
                              return std::fwrite(image.data(), image.size(), 1, stream) == 1 &&
                                     project.sealHeader(stream);
                          });
}
