#include "tools/files/mapping_progress.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "project/open_to_read.h"

namespace {

// The bar is drawn in a thread of its own, where an exception ends the process: nothing here asks
// for memory.

/// Bytes of files that are resident in this process's mappings, from the third number of statm.
std::uint64_t residentFileBytes() {
    std::array<char, BUFSIZ> text{};  // the seven numbers leave zeros behind them
    const int statm = openToRead("/proc/self/statm");
    // What cannot be read counts as no pages.
    [[maybe_unused]] const ssize_t count = ::read(statm, text.data(), text.size());
    ::close(statm);
    const char* rest = text.data();
    std::array<std::uint64_t, 3> pages{};
    for (std::uint64_t& number : pages) {
        char* end = nullptr;
        number = std::strtoull(rest, &end, 10);
        rest = end;
    }
    return pages.back() * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

void drawBar(int percent) {
    constexpr int width = 40;
    constexpr const char* full = "########################################";
    const int filled = percent * width / 100;
    std::fprintf(stderr, "\r[%.*s%*s] %d %%", filled, full, width - filled, "", percent);
}

}  // namespace

MappingProgress::MappingProgress(std::uint64_t size)
    : size_(size), residentBefore_(residentFileBytes()) {
    if (size > quietSize && ::isatty(STDERR_FILENO) == 1) {
        try {
            thread_ = std::thread([this] { draw(); });
        } catch (const std::exception&) {
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
            drawBar(static_cast<int>(percent));
            shown = percent;
        }
    }
}
