#include "project/project_file.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

std::span<const std::uint8_t> ProjectFile::valueOf(const ProjectEntry& entry) const {
    return std::span(bytes_).subspan(entry.offset, entry.size);
}

std::optional<std::span<const std::uint8_t>> ProjectFile::find(ProjectAttributeId id) const {
    const auto entry = std::find_if(directory_.begin(), directory_.end(),
                                    [id](const ProjectEntry& e) { return e.id == id; });
    if (entry != directory_.end()) {
        return valueOf(*entry);
    }
    const auto inserted = std::find_if(inserted_.begin(), inserted_.end(),
                                       [id](const auto& own) { return own.first == id; });
    return inserted == inserted_.end()
               ? std::nullopt
               : std::optional<std::span<const std::uint8_t>>(inserted->second);
}

bool ProjectFile::getAttribute(ProjectAttributeId id, void* buffer, std::uint32_t capacity) const {
    const auto value = find(id);
    if (!value.has_value() || value->size() > capacity) {
        return false;
    }
    if (!value->empty()) {
        std::memcpy(buffer, value->data(), value->size());
    }
    return true;
}

std::uint32_t ProjectFile::attributeSize(ProjectAttributeId id) const {
    const auto value = find(id);
    return value.has_value() ? static_cast<std::uint32_t>(value->size()) : 0;
}

std::vector<std::uint8_t> ProjectFile::getBytes(ProjectAttributeId id) const {
    const auto value = find(id);
    return value.has_value() ? std::vector<std::uint8_t>(value->begin(), value->end())
                             : std::vector<std::uint8_t>();
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
    std::unordered_set<ProjectAttributeId> ids;
    for (const ProjectEntry& entry : directory_) {
        ids.insert(entry.id);
    }
    for (const auto& [id, bytes] : inserted_) {
        ids.insert(id);
    }
    return {ids.begin(), ids.end()};
}

std::vector<ProjectAttribute> ProjectFile::attributes() const {
    std::vector<ProjectAttribute> all;
    all.reserve(directory_.size() + inserted_.size());
    for (const ProjectEntry& entry : directory_) {
        all.push_back({.id = entry.id, .value = valueOf(entry)});
    }
    for (const auto& [id, bytes] : inserted_) {
        all.push_back({.id = id, .value = bytes});
    }
    // Of entries with one id the first stays in front, and is the one that is left.
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& a, const auto& b) { return a.id < b.id; });
    const auto end = std::unique(all.begin(), all.end(),
                                 [](const auto& a, const auto& b) { return a.id == b.id; });
    all.erase(end, all.end());
    return all;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): moved from
bool ProjectFile::insertAttribute(ProjectAttributeId id, std::vector<std::uint8_t> bytes) {
    if (find(id).has_value()) {
        return false;
    }
    inserted_.emplace_back(id, std::move(bytes));
    return true;
}

bool ProjectFile::eraseAttribute(ProjectAttributeId id) {
    const auto erased =
        std::erase_if(directory_, [id](const ProjectEntry& entry) { return entry.id == id; }) +
        std::erase_if(inserted_, [id](const auto& own) { return own.first == id; });
    return erased != 0;
}

void ProjectFile::clear() {
    *this = ProjectFile();
}
