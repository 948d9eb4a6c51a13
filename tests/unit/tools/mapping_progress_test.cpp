#include "tools/files/mapping_progress.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "tests/support/failing_calls.h"
#include "tests/unit/tools/file_calls.h"

namespace {

/// While it lives, standard error is a terminal.
class ScopedTerminal {
public:
    ScopedTerminal() : ours_(::posix_openpt(O_RDWR | O_NOCTTY)), saved_(::dup(STDERR_FILENO)) {
        if (::grantpt(ours_) != 0 || ::unlockpt(ours_) != 0) {
            throw std::runtime_error("no terminal");
        }
        const int theirs = ::open(::ptsname(ours_), O_RDWR | O_NOCTTY);
        ::dup2(theirs, STDERR_FILENO);
        ::close(theirs);
    }
    ~ScopedTerminal() {
        ::dup2(saved_, STDERR_FILENO);
        ::close(saved_);
        ::close(ours_);
    }
    ScopedTerminal(const ScopedTerminal&) = delete;
    ScopedTerminal& operator=(const ScopedTerminal&) = delete;

    /// Waits until this text has been written to the terminal; gives all that was.
    std::string waitFor(std::string_view text) const {
        std::array<char, 4096> shown{};
        std::size_t length = 0;
        while (std::string_view(shown.data(), length).find(text) == std::string_view::npos) {
            const ssize_t count = ::read(ours_, shown.data() + length, shown.size() - length);
            if (count <= 0) {
                ADD_FAILURE() << "the terminal ends after " << length << " bytes";
                break;
            }
            length += static_cast<std::size_t>(count);
        }
        return {shown.data(), length};
    }

private:
    int ours_;
    int saved_;
};

TEST(MappingProgress, DrawsABarAndTakesItAway) {
    const ScopedTerminal terminal;
    {
        const MappingProgress progress(MappingProgress::quietSize + 1);
        terminal.waitFor("\r[                                        ] 0 %");
    }
    terminal.waitFor("\r\033[K");
}

TEST(MappingProgress, DrawsABarOnceForEachPercent) {
    const ScopedTerminal terminal;
    ScopedFileCalls calls;
    {
        const MappingProgress progress(MappingProgress::quietSize + 1);
        while (calls.opened < 4) {
            std::this_thread::yield();
        }
    }
    EXPECT_EQ(terminal.waitFor("\r\033[K"),
              "\r[                                        ] 0 %\r\033[K");
}

TEST(MappingProgress, DrawsNothingWithoutATerminal) {
    testing::internal::CaptureStderr();
    { const MappingProgress progress(MappingProgress::quietSize + 1); }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(MappingProgress, DrawsNothingForASmallFile) {
    const ScopedTerminal terminal;
    { const MappingProgress progress(MappingProgress::quietSize); }
    std::fputs("end", stderr);
    EXPECT_EQ(terminal.waitFor("end"), "end");
}

TEST(MappingProgress, DrawsNothingWhereNoThreadCanBeHad) {
    const ScopedTerminal terminal;
    ScopedFailingCalls calls;
    calls.blockLimit = 0;
    EXPECT_NO_THROW(MappingProgress(MappingProgress::quietSize + 1));
}

}  // namespace
