#pragma once

#include <cstdint>
#include <span>

/// Read-only private mapping of a file, with its descriptor. One thread owns it.
///
/// Only the low 32 bits of a size count, as a signed number. Another process that shortens the file
/// while it is read ends this one with a bus error.
struct MappedFile {
    std::int32_t descriptor = -1;           ///< -1 when closed
    const std::uint8_t* address = nullptr;  ///< null when nothing is mapped

    MappedFile() = default;
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    /// Ends the mapping and closes the descriptor, ignoring failures; does nothing once the
    /// descriptor is closed.
    ~MappedFile();

    /// Opens read-only. False when the object has a descriptor or a mapping already, which then
    /// stay, or when the file cannot be opened. A FIFO is opened without waiting for a writer.
    bool open(const char* path);

    /// Low 32 bits of the file's size; 0 when closed or unknown.
    std::uint32_t size() const;

    /// Maps the file. False when it is closed, mapped already (the mapping stays), empty, or cannot
    /// be mapped.
    bool map();

    /// Ends the mapping. False when there is none, when the descriptor is closed or `size` gives 0
    /// by now, so that its length is not known, or when the system refuses.
    bool unmap();

    /// Closes the descriptor and leaves a mapping in place. False when closed.
    bool close();
};

/// Why a file has no bytes to sign or verify.
enum class FileFault : std::uint8_t {
    none,
    open,        ///< it cannot be opened
    directory,   ///< this and `notRegular` are told instead of any fault below
    notRegular,  ///< neither a regular file nor a directory
    empty,
    noBytes,   ///< not empty, but its size is a multiple of 2^32
    tooLarge,  ///< its size, taken as 32 bits with a sign, is negative
    mapping,   ///< the system does not map it
    changed,   ///< it has become shorter while it was mapped
    cut        ///< it has become shorter since then
};

/// A mapped file whose bytes are being signed or verified.
struct MappedInput {
    MappedFile file;
    std::span<const std::uint8_t> bytes;  ///< what counts of the file; empty if there is a fault
    FileFault fault = FileFault::none;
    int openError = 0;       ///< `errno` of the fault `open`
    std::uint64_t size = 0;  ///< of the file in full, once it is open

    MappedInput() = default;
    MappedInput(const MappedInput&) = delete;
    MappedInput& operator=(const MappedInput&) = delete;

    /// Ends the mapping of `bytes` and no more: where the file has grown meanwhile, other memory
    /// stands behind it. Of a file that grew between the two looks at its size that `mapInputFile`
    /// takes, the pages behind `bytes` stay mapped.
    ~MappedInput();

    /// Whether the file still has all of `bytes`, by its size in full: one that has grown, however
    /// far, has lost none. What it lost meanwhile is read as other bytes.
    bool isWhole() const;

    /// Judges a file whose bytes have been read: false if there is a fault, which is `cut` where
    /// the file is not whole any more.
    bool endWhole();
};

/// Opens and maps the file at `path`, once, into a fresh `input`, and returns its bytes; none if
/// there is a fault, which `input` tells.
std::span<const std::uint8_t> mapInputFile(MappedInput& input, const char* path);
