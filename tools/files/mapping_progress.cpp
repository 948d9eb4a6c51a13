#include "tools/files/mapping_progress.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <system_error>

namespace {

/// Bytes of files that are resident in this process's mappings, from the third number of statm.
std::uint64_t residentFileBytes() {
    std::ifstream statm("/proc/self/statm");
    std::uint64_t size = 0;
    std::uint64_t resident = 0;
    std::uint64_t shared = 0;
    statm >> size >> resident >> shared;
    return shared * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

std::string bar(std::uint64_t percent) {
    constexpr std::uint64_t width = 40;
    std::string text(percent * width / 100, '#');
    text.resize(width, ' ');
    return "[" + text + "] " + std::to_string(percent) + " %";
}

}  // namespace

MappingProgress::MappingProgress(std::uint64_t size)
    : size_(size), residentBefore_(residentFileBytes()) {
    if (size > quietSize && ::isatty(STDERR_FILENO) == 1) {
        try {
            thread_ = std::thread([this] { draw(); });
        } catch (const std::system_error&) {
            // Where no thread can be had, the work goes on without the bar.
        }
    }
}

MappingProgress::~MappingProgress() {
    if (thread_.joinable()) {
        ended_ = true;
        thread_.join();
        std::fputs("\r\033[K", stderr);
    }
}

void MappingProgress::draw() {
    constexpr auto pause = std::chrono::milliseconds(50);
    std::uint64_t percent = 0;
    for (std::uint64_t shown = ~percent; !ended_; std::this_thread::sleep_for(pause)) {
        const std::uint64_t resident = residentFileBytes();
        const std::uint64_t read = resident - std::min(resident, residentBefore_);
        percent = std::max(percent, std::min(read, size_) * 100 / size_);
        if (percent != shown) {
            std::fprintf(stderr, "\r%s", bar(percent).c_str());
            shown = percent;
        }
    }
}
