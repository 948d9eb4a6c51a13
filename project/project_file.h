#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// Identifier of an attribute; the code that asks for an id fixes its meaning.
using ProjectAttributeId = std::uint32_t;

/// Header of a project file as it stands on disk, little-endian.
struct ProjectFileHeader {
    std::array<char, 4> magic{};
    std::uint32_t entryCount = 0;
    std::array<std::uint8_t, 16> bodyDigest{};  ///< MD5 of everything behind the header
};

/// Entry of a project file's directory as it stands on disk, little-endian.
struct ProjectEntry {
    ProjectAttributeId id = 0;
    std::uint32_t offset = 0;  ///< of the value, from the start of the file
    std::uint32_t size = 0;    ///< of the value in bytes
};

/// Why a file does not load, in the order of the steps: at `directory` and behind, the header and
/// the digest were in order.
enum class ProjectFault : std::uint8_t {
    none,
    open,        ///< it cannot be opened
    header,      ///< it is shorter than a header
    magic,       ///< it begins with another magic
    unreadable,  ///< reading or seeking fails, or it is shorter by then than its size was
    noBody,      ///< its header counts entries, and nothing is behind it
    digest,      ///< the digest in its header is not that of its body
    directory,   ///< it has no room for as many entries as its header counts
    emptyValue,  ///< an entry has a size of 0
    valueRange   ///< an entry's value runs past the end
};

/// How the loading of a file ended. A number that it did not get to is 0.
struct ProjectLoading {
    ProjectFault fault = ProjectFault::none;
    int error = 0;                   ///< errno of `open`; of `unreadable`, if reading failed
    std::uint64_t fileSize = 0;      ///< in bytes: of `header`, or once the body was read
    std::uint32_t entryCount = 0;    ///< as the header counts them
    std::uint32_t refusedEntry = 0;  ///< from 0, from `directory` on: the first one that is refused
    ProjectEntry entry{};            ///< that one, if there is room for it
};

/// One attribute of a table, which owns the bytes of the value.
struct ProjectAttribute {
    ProjectAttributeId id = 0;
    std::span<const std::uint8_t> value;
};

/// In-memory form of a project file: a table of attributes, and the path that they came from.
///
/// A plain value; it holds no open file. Absent ids are a normal outcome. The bytes of a file are
/// held once, however many values share them, and a look-up goes through the entries one by one, so
/// that the cost of a file grows with its size alone, whatever its directory says.
struct ProjectFile {
    // NOLINTNEXTLINE(misc-non-private-member-variables-in-classes): any value will do
    std::string path;  ///< of the last populated file loaded, or of the file created

    // The attributes in memory.

    bool isEmpty() const { return directory_.empty() && inserted_.empty(); }

    /// Copies the value to the start of `buffer` and tells nothing of its length. False, and
    /// nothing copied, when the id is absent or the value has more than `capacity` bytes.
    bool getAttribute(ProjectAttributeId id, void* buffer, std::uint32_t capacity) const;

    /// Size of the value in bytes, cut to 32 bits; 0 if the id is absent.
    std::uint32_t attributeSize(ProjectAttributeId id) const;

    /// The value; empty if the id is absent.
    std::vector<std::uint8_t> getBytes(ProjectAttributeId id) const;

    /// The value as text, without its last byte if that is zero; empty if the id is absent.
    std::string getString(ProjectAttributeId id) const;

    /// All ids, in the order of an unordered set of the standard library that they were put into
    /// one by one: those of the file in its order, then those inserted.
    std::vector<ProjectAttributeId> attributeIds() const;

    /// All attributes in ascending order of their ids. The views hold until the table changes or
    /// goes.
    std::vector<ProjectAttribute> attributes() const;

    /// The directory of the file that was loaded, in its order, with the entries that do not count
    /// because an earlier one has their id; without those of erased ids.
    const std::vector<ProjectEntry>& directory() const { return directory_; }

    /// True if inserted; false, with the table as it was, if the id was present.
    bool insertAttribute(ProjectAttributeId id, std::vector<std::uint8_t> bytes);

    /// True if an attribute was removed.
    bool eraseAttribute(ProjectAttributeId id);

    /// Removes all attributes and empties the path.
    void clear();

    // The file on disk: a header of 24 bytes, a directory of 12-byte entries (id, offset from the
    // start of the file, size), and the values. Only populated files have a digest that means
    // anything.

    /// Replaces the content with that of the file, and tells the first `ProjectFault` if it has
    /// one; the table is then empty. Of two entries with one id the first is kept.
    ///
    /// `filePath` must not be the text of `path`, for if the table is populated, `path` is emptied
    /// first. A refusal of the directory or a value empties `path` too; any other refusal leaves
    /// `path` as it then is. A file with an entry count of 0 loads as an empty table whatever else
    /// it holds, and sets no path.
    ///
    /// The bytes that were digested are those that the values are taken from. Takes memory of twice
    /// the file's size and a time that grows with the size alone, whatever the directory says.
    /// Memory exhaustion passes as std::bad_alloc.
    ProjectLoading loadReporting(const char* filePath);

    /// `loadReporting` of a file with these bytes, but never the fault `open`, and it sets no path.
    /// The bytes are not needed afterwards.
    ProjectLoading loadBytes(std::span<const std::uint8_t> bytes);

    /// Whether `loadReporting` meets no fault.
    bool load(const char* filePath) { return loadReporting(filePath).fault == ProjectFault::none; }

    /// Makes or truncates the file so that it holds an empty project: the magic and 20 zero bytes.
    /// Empties the table and sets `path`; `filePath` is as in `loadReporting`.
    ///
    /// False when the file cannot be opened; `path` is then emptied if the table was populated, and
    /// stays otherwise. False too when the device does not take these bytes: `path` is then empty,
    /// and a truncated file stays, which does not load.
    bool create(const char* filePath);

    /// Writes a header for the body that stands in `stream`, which is open for reading and writing:
    /// the number of attributes in the table and the body's digest. False, with the stream's file
    /// as it was, when there is no body or it cannot be read; false too when the header cannot be
    /// written. The stream is neither flushed nor closed: a full device may show only when it is.
    bool sealHeader(std::FILE* stream) const;

private:
    /// The value of the first entry with this id, or what was inserted under it.
    std::optional<std::span<const std::uint8_t>> find(ProjectAttributeId id) const;

    /// The value of an entry of the directory.
    std::span<const std::uint8_t> valueOf(const ProjectEntry& entry) const;

    /// Steps of `loadReporting`, which give the fault that they meet; `sealHeader` shares the
    /// first. It gives all bytes of the stream's file, zeros in the place of the header, and the
    /// digest of the body. The second takes the bytes over, unless an entry is refused.
    static ProjectFault digestBody(std::FILE* stream, std::vector<std::uint8_t>& bytes,
                                   std::array<std::uint8_t, 16>& digest);
    ProjectFault readDirectory(std::vector<std::uint8_t>&& bytes, ProjectLoading& loading);
    ProjectFault loadStream(std::FILE* stream, ProjectLoading& loading);

    std::vector<std::uint8_t> bytes_;      ///< the whole file that was loaded, header included
    std::vector<ProjectEntry> directory_;  ///< each value lies within `bytes_`
    std::vector<std::pair<ProjectAttributeId, std::vector<std::uint8_t>>> inserted_;
};
