#include "tests/support/reference_project.h"

#include <openssl/md5.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view magic = "VLT2";
constexpr std::size_t digestPosition = 8;

std::uint64_t numberAt(const Bytes& file, std::size_t position) {
    return file[position] + 0x100ULL * file[position + 1] + 0x10000ULL * file[position + 2] +
           0x1000000ULL * file[position + 3];
}

std::array<std::uint8_t, MD5_DIGEST_LENGTH> bodyDigest(const Bytes& file) {
    std::array<std::uint8_t, MD5_DIGEST_LENGTH> digest{};
    MD5(file.data() + headerSize, file.size() - headerSize, digest.data());
    return digest;
}

}  // namespace

ReferenceProject referenceProject(const Bytes& file) {
    if (file.size() < headerSize || !std::equal(magic.begin(), magic.end(), file.begin())) {
        return {};
    }
    const std::uint64_t entries = numberAt(file, 4);
    if (entries == 0) {
        return {.loaded = true};
    }
    const auto digest = bodyDigest(file);
    if (file.size() == headerSize ||
        !std::equal(digest.begin(), digest.end(), file.begin() + digestPosition)) {
        return {};
    }
    ReferenceProject reading;
    for (std::uint64_t i = 0; i < entries; ++i) {
        const std::size_t entry = headerSize + entrySize * i;
        if (entry + 12 > file.size()) {
            return {.directoryRefused = true};
        }
        const std::uint64_t offset = numberAt(file, entry + 4);
        const std::uint64_t size = numberAt(file, entry + 8);
        if (size == 0 || offset + size > file.size()) {
            return {.directoryRefused = true};
        }
        const auto value = file.begin() + static_cast<std::ptrdiff_t>(offset);
        reading.attributes.try_emplace(static_cast<std::uint32_t>(numberAt(file, entry)), value,
                                       value + static_cast<std::ptrdiff_t>(size));
    }
    reading.loaded = true;
    return reading;
}

Bytes withDigest(Bytes file) {
    if (file.size() >= headerSize) {
        const auto digest = bodyDigest(file);
        std::copy(digest.begin(), digest.end(), file.begin() + digestPosition);
    }
    return file;
}

Bytes mendedProject(Bytes file) {
    std::copy_n(magic.begin(), std::min(magic.size(), file.size()), file.begin());
    return withDigest(std::move(file));
}
