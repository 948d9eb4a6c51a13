#pragma once

#include <cstdio>
#include <functional>
#include <optional>
#include <string>

/// Who may read a new file; its owner alone may write to it.
enum class FileAudience {
    owner,     ///< mode 0600
    everybody  ///< mode 0644, less the process's umask
};

/// Makes a new file at `path` whose content `write` puts into a stream open for reading and
/// writing; `write` answers whether it could. Returns what went wrong, path in front, or nothing.
///
/// SIGHUP, SIGINT, SIGQUIT and SIGTERM are held back, but those that the process ignores. One that
/// arrives before the file has its name ends the process, unless it is handled, and there is no
/// file. Once it has it they stay held back until the process ends, so that what is done is not
/// reported as failed.
///
/// The file appears whole or not at all, and a file that exists at `path` is never replaced. It has
/// no name until its content is on the disk, so nothing stays behind however the process ends.
/// Where the file system has no such files, it has a name of its own beside `path` until then, and
/// only a SIGKILL or a loss of power leaves that behind.
std::optional<std::string> writeWholeFile(const std::string& path, FileAudience audience,
                                          const std::function<bool(std::FILE*)>& write);
