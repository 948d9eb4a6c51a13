#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

/// Identifier of an attribute; the code that asks for an id fixes its meaning.
using ProjectAttributeId = std::uint32_t;

/// Header of a project file as it stands on disk, little-endian.
struct ProjectFileHeader {
    std::array<char, 4> magic{};
    std::uint32_t entryCount = 0;
    std::array<std::uint8_t, 16> bodyDigest{};  ///< MD5 of everything behind the header
};

/// In-memory form of a project file: a table of attributes, and the path that they came from.
///
/// A plain value; it holds no open file. Every access copies. Absent ids are a normal outcome.
struct ProjectFile {
    std::unordered_map<ProjectAttributeId, std::vector<std::uint8_t>> attributes;
    std::string path;  ///< of the last populated file loaded, or of the file created

    // The attributes in memory.

    /// Copies the value to the start of `buffer` and tells nothing of its length. False, and
    /// nothing copied, when the id is absent or the value has more than `capacity` bytes.
    bool getAttribute(ProjectAttributeId id, void* buffer, std::uint32_t capacity) const;

    /// Size of the value in bytes; 0 if the id is absent.
    std::uint32_t attributeSize(ProjectAttributeId id) const;

    /// The value; empty if the id is absent.
    std::vector<std::uint8_t> getBytes(ProjectAttributeId id) const;

    /// The value as text, without its last byte if that is zero; empty if the id is absent.
    std::string getString(ProjectAttributeId id) const;

    /// All ids, in the table's order.
    std::vector<ProjectAttributeId> attributeIds() const;

    /// True if inserted; false, with the table as it was, if the id was present.
    bool insertAttribute(ProjectAttributeId id, std::vector<std::uint8_t> bytes);

    /// True if an attribute was removed.
    bool eraseAttribute(ProjectAttributeId id);

    /// Removes all attributes and empties the path.
    void clear();

    // The file on disk: a header of 24 bytes, a directory of 12-byte entries (id, offset from the
    // start of the file, size), and the values. Only populated files have a digest that means
    // anything.

    /// Replaces the content with that of the file. False when it cannot be opened, is too short,
    /// has another magic, a digest that differs, a short directory, an empty value or one that runs
    /// past the end; the table is then empty. Of two entries with one id the first is kept.
    ///
    /// A file with an entry count of 0 loads as an empty table whatever else it holds, and sets no
    /// path; that of a populated table is emptied in any case. Memory exhaustion passes as
    /// std::bad_alloc.
    bool load(const char* filePath);

    /// Makes or truncates the file so that it holds an empty project: the magic and 20 zero bytes.
    /// False when it cannot be opened, or when the device does not take these bytes.
    bool create(const char* filePath);

    /// Writes a header for the body that stands in `stream`, which is open for reading and writing:
    /// the number of attributes in the table and the body's digest. False, with the stream's file
    /// as it was, when there is no body or it cannot be read; false too when the header cannot be
    /// written.
    bool sealHeader(std::FILE* stream) const;

private:
    /// Steps of `load`; `sealHeader` shares the first.
    static bool digestBody(std::FILE* stream, std::array<std::uint8_t, 16>& digest);
    bool readDirectory(std::FILE* stream, const ProjectFileHeader& header);
    bool loadStream(std::FILE* stream);
};
