#include "tests/support/hostile_project.h"

#include <cstring>

#include "tests/support/project_builder.h"
#include "tests/support/reference_project.h"

namespace {

/// Ids that spread over all of 32 bits, each of them twice.
std::uint32_t scattered(std::uint32_t number) {
    return number / 2 * 2654435761U | 0x80U;
}

/// Ids that a hash table of the standard library, on its way to the size of a large one, has in one
/// and the same of its buckets, as many as there are of them.
std::uint32_t ofOneBucket(std::uint32_t number) {
    constexpr std::uint32_t buckets = 85229;
    constexpr std::uint32_t idsOfBucket = 0xFFFFFFFF / buckets;
    return 100 + number % idsOfBucket * buckets + number / idsOfBucket;
}

}  // namespace

const std::vector<HostileProject>& hostileProjects() {
    static const std::vector<HostileProject> kinds = {
        {"AscendingIdsThatSpanTheFile",
         [](std::uint32_t number, std::uint32_t fileSize) {
             return ImageEntry{.id = 100 + number, .offset = 0, .size = fileSize};
         }},
        {"OneIdThatSpansTheFile",
         [](std::uint32_t, std::uint32_t fileSize) {
             return ImageEntry{.id = 7, .offset = 0, .size = fileSize};
         },
         true},
        {"ScatteredIdsOfOneByte",
         [](std::uint32_t number, std::uint32_t) {
             return ImageEntry{.id = scattered(number), .offset = number, .size = 1};
         },
         true},
        {"IdsOfOneBucket",
         [](std::uint32_t number, std::uint32_t) {
             return ImageEntry{.id = ofOneBucket(number), .offset = number, .size = 1};
         }},
    };
    return kinds;
}

Bytes hostileBytes(const HostileProject& kind, std::size_t size, const AttributeValues& last) {
    std::size_t valueBytes = 0;
    for (const auto& [id, value] : last) {
        valueBytes += value.size();
    }
    const std::size_t count = (size - headerSize - valueBytes) / entrySize;
    ProjectImage image;
    image.entryCount = static_cast<std::uint32_t>(count);
    Bytes bytes = image.bytes();
    bytes.resize(size);

    std::uint8_t* next = bytes.data() + headerSize;
    const auto put = [&next](const ImageEntry& entry) {
        static_assert(sizeof entry == entrySize);
        std::memcpy(next, &entry, sizeof entry);
        next += sizeof entry;
    };
    for (std::uint32_t number = 0; number < count - last.size(); ++number) {
        put(kind.entry(number, static_cast<std::uint32_t>(size)));
    }
    std::size_t offset = headerSize + entrySize * count;
    for (const auto& [id, value] : last) {
        put({.id = id,
             .offset = static_cast<std::uint32_t>(offset),
             .size = static_cast<std::uint32_t>(value.size())});
        std::memcpy(bytes.data() + offset, value.data(), value.size());
        offset += value.size();
    }
    return withDigest(std::move(bytes));
}
