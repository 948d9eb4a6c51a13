#pragma once

#include <csignal>

#include "tools/files/cut_file.h"

/// While it lives, a file that is cut while it is read does not end the process.
struct ScopedCutReport {
    ScopedCutReport() { reportCutFile(); }
    ~ScopedCutReport() { std::signal(SIGBUS, SIG_DFL); }
    ScopedCutReport(const ScopedCutReport&) = delete;
    ScopedCutReport& operator=(const ScopedCutReport&) = delete;
};
