#include "tools/signature/key_fingerprint.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "core/entry.h"
#include "core/hash.h"
#include "tools/signature/byte_string.h"
#include "tools/signature/key_export.h"

std::optional<std::string> keyFingerprint(const ProjectFile& project) {
    const KeyExport key = exportPublicKey(project);
    if (key.refusal.has_value()) {
        return std::nullopt;
    }
    std::array<std::uint8_t, core::sha256DigestSize> digest{};
    coreEntry::sha256Digest(key.der.data(), key.der.size(), digest.data());
    // The core stores each word with its least significant byte first.
    constexpr std::size_t wordSize = 4;
    for (auto word = digest.begin(); word != digest.end(); word += wordSize) {
        std::reverse(word, word + wordSize);
    }
    return hexadecimalDigits(digest);
}
