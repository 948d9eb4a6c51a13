#include "project/project_file.h"

#include <cstring>
#include <utility>

bool ProjectFile::getAttribute(ProjectAttributeId id, void* buffer, std::uint32_t capacity) const {
    const auto found = attributes.find(id);
    if (found == attributes.end() || found->second.size() > capacity) {
        return false;
    }
    if (!found->second.empty()) {
        std::memcpy(buffer, found->second.data(), found->second.size());
    }
    return true;
}

std::uint32_t ProjectFile::attributeSize(ProjectAttributeId id) const {
    const auto found = attributes.find(id);
    return found == attributes.end() ? 0 : static_cast<std::uint32_t>(found->second.size());
}

std::vector<std::uint8_t> ProjectFile::getBytes(ProjectAttributeId id) const {
    const auto found = attributes.find(id);
    return found == attributes.end() ? std::vector<std::uint8_t>() : found->second;
}

std::string ProjectFile::getString(ProjectAttributeId id) const {
    const std::vector<std::uint8_t> bytes = getBytes(id);
    std::string text(bytes.begin(), bytes.end());
    if (!text.empty() && text.back() == '\0') {
        text.pop_back();
    }
    return text;
}

std::vector<ProjectAttributeId> ProjectFile::attributeIds() const {
    std::vector<ProjectAttributeId> ids;
    ids.reserve(attributes.size());
    for (const auto& [id, bytes] : attributes) {
        ids.push_back(id);
    }
    return ids;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): moved from
bool ProjectFile::insertAttribute(ProjectAttributeId id, std::vector<std::uint8_t> bytes) {
    return attributes.try_emplace(id, std::move(bytes)).second;
}

bool ProjectFile::eraseAttribute(ProjectAttributeId id) {
    return attributes.erase(id) != 0;
}

void ProjectFile::clear() {
    attributes.clear();
    path.clear();
}
