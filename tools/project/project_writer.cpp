#include "tools/project/project_writer.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "project/project_key_record.h"
#include "tools/files/whole_file.h"
#include "tools/project/stored_bytes.h"

namespace {

/// Where the values begin.
std::size_t valuesOffset(const std::vector<ProjectAttribute>& attributes) {
    return sizeof(ProjectFileHeader) + sizeof(ProjectEntry) * attributes.size();
}

std::size_t fileSize(const std::vector<ProjectAttribute>& attributes) {
    std::size_t size = valuesOffset(attributes);
    for (const ProjectAttribute& attribute : attributes) {
        size += attribute.value.size();
    }
    return size;
}

/// Header, directory and values, the header of an empty project for now.
Bytes projectImage(const std::vector<ProjectAttribute>& attributes) {
    Bytes image;
    image.reserve(fileSize(attributes));
    image.resize(sizeof(ProjectFileHeader));
    std::size_t offset = valuesOffset(attributes);
    for (const auto& [id, value] : attributes) {
        appendWord(image, id);
        appendWord(image, offset);
        appendWord(image, value.size());
        offset += value.size();
    }
    for (const ProjectAttribute& attribute : attributes) {
        appendBytes(image, attribute.value.data(), attribute.value.size());
    }
    return image;
}

}  // namespace

std::optional<std::string> sizeRefusal(const ProjectFile& project, const std::string& path) {
    constexpr std::size_t largest = std::numeric_limits<std::uint32_t>::max();
    const std::size_t size = fileSize(project.attributes());
    if (size <= largest) {
        return std::nullopt;
    }
    return path + ": would have " + std::to_string(size) +
           " bytes, and a project file has at most " + std::to_string(largest);
}

std::optional<std::string> writeProjectFile(const ProjectFile& project, const std::string& path) {
    const bool secret = project.attributeSize(privateScalarAttribute) != 0;
    if (auto refusal = sizeRefusal(project, path)) {
        return refusal;
    }
    const Bytes image = projectImage(project.attributes());
    return writeWholeFile(path, secret ? FileAudience::owner : FileAudience::everybody,
                          [&](std::FILE* stream) {
                              return std::fwrite(image.data(), image.size(), 1, stream) == 1 &&
                                     project.sealHeader(stream);
                          });
}
