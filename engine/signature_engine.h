#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/mapped_file.h"
#include "project/project_file.h"
#include "project/project_key_record.h"

/// Bytes of the buffer that a signature's text is written to; the text never reaches 57 characters.
inline constexpr std::size_t signatureBufferSize = 128;

// The four operations on a project and some bytes, or a project and a file. Paths and the signature
// are terminated text; a null pointer or a length of 0 gives false. The core must have been
// started.
//
// A file is mapped, not copied, and only the low 32 bits of its size count, as a signed number: a
// file of 2^32 + 5 bytes stands for its first five, one of 2^31 bytes is refused.

/// What an operation works on and what it meets, step by step. The first step with a fault is the
/// last that is taken, and the later members stay empty; but the fault `cut` of the input is found
/// when all is done. Whoever wants to know why an operation gave false hands in a fresh one.
struct EngineReport {
    MappedInput input;       ///< of the operations on a file
    bool hasData = false;    ///< there is something to sign or verify
    ProjectLoading loading;  ///< of the project
    ProjectFile project;
    KeyReport key;  ///< of its key
};

/// Signs `length` bytes under the project's key and writes the text to `signature`, a zero-filled
/// buffer of `signatureBufferSize` bytes. False, with the buffer as it was, when the project cannot
/// be loaded, lacks its scalar, its public point or a base point on the curve's field, or when an
/// unsound base point yields no signature.
bool signData(const char* projectPath, const std::uint8_t* data, std::uint32_t length,
              char* signature);
bool signData(const char* projectPath, const std::uint8_t* data, std::uint32_t length,
              char* signature, EngineReport& report);

/// `signData` over the content of a file; false too, with the buffer zero-filled, when it cannot be
/// mapped, or when it becomes shorter meanwhile and the process survives that.
bool signFile(const char* projectPath, const char* filePath, char* signature);
bool signFile(const char* projectPath, const char* filePath, char* signature, EngineReport& report);

/// Whether the text is a signature of `length` bytes under the project's public point. False too
/// when the project cannot be loaded or lacks one of its points, or the text is malformed. The
/// scalar is not needed.
bool verifyData(const char* projectPath, const std::uint8_t* data, std::uint32_t length,
                const char* signature);
bool verifyData(const char* projectPath, const std::uint8_t* data, std::uint32_t length,
                const char* signature, EngineReport& report);

/// `verifyData` over the content of a file; false too when it cannot be mapped or becomes shorter.
bool verifyFile(const char* projectPath, const char* filePath, const char* signature);
bool verifyFile(const char* projectPath, const char* filePath, const char* signature,
                EngineReport& report);
