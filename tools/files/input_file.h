#pragma once

#include <optional>
#include <string>

#include "engine/mapped_file.h"
#include "tools/refusal.h"

/// A file to sign, as the engine takes it.
struct InputFile {
    std::string path;     ///< what the engine opens
    int descriptor = -1;  ///< keeps a file that has no name; -1 if it has one

    InputFile() = default;
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
};

/// What a person calls the file at `path`; standard input is "-".
std::string inputName(const std::string& path);

/// Whether something stands at the path.
bool isFile(const std::string& path);

/// Says on standard error that standard input is waited for, if it is a terminal.
void reportWaiting();

/// Makes `file`, which must be new, stand for the file at `path`, or for what standard input holds
/// if `path` is "-". Returns what went wrong, or nothing.
///
/// A pipe is copied to the end into a file without a name in the folder that TMPDIR names, or else
/// in /var/tmp; memory does not grow with it. A file on standard input that is not yet read from
/// and can be opened once more is taken as it stands.
std::optional<std::string> openInputFile(const std::string& path, InputFile& file);

/// Why `mapInputFile` gave no bytes, in words that follow the path and a colon; nothing when it
/// did.
std::optional<Refusal> inputFileRefusal(const MappedInput& input);

/// Says how much of a mapped file is left out, of which only the size modulo 2^32 counts; nothing
/// when it is taken whole.
std::optional<std::string> inputFileRemark(const MappedInput& input);
