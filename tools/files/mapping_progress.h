#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

/// While it lives, draws a bar on standard error that tells how much of a file of `size` bytes has
/// been read through a memory mapping, and takes it away at its end. Draws nothing when standard
/// error is no terminal, or for a file of up to `quietSize` bytes.
///
/// A page of a mapping becomes resident when it is read first, so the growth of the process's
/// resident file pages is what has been read.
class MappingProgress {
public:
    static constexpr std::uint64_t quietSize = std::uint64_t{64} << 20;

    explicit MappingProgress(std::uint64_t size);
    ~MappingProgress();
    MappingProgress(const MappingProgress&) = delete;
    MappingProgress& operator=(const MappingProgress&) = delete;

private:
    void draw();

    std::uint64_t size_;
    std::uint64_t residentBefore_;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};
