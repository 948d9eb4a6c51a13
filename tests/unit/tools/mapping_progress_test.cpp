#include "tools/files/mapping_progress.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <thread>
#include <utility>

#include "tests/support/failing_calls.h"
#include "tests/support/open_files.h"
#include "tests/support/standard_streams.h"
#include "tests/unit/tools/file_calls.h"
#include "tests/unit/tools/scoped_terminal.h"

namespace {

TEST(MappingProgress, DrawsABarAndTakesItAway) {
    const ScopedTerminal terminal(STDERR_FILENO);
    {
        const MappingProgress progress((64 << 20) + 1);
        terminal.waitFor("\r[                                        ] 0 %");
    }
    terminal.waitFor("\r\033[K");
}

TEST(MappingProgress, DrawsABarOnceForEachPercent) {
    const ScopedTerminal terminal(STDERR_FILENO);
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

TEST(MappingProgress, TellsHowMuchOfAFileHasBeenRead) {
    constexpr std::size_t size = std::size_t{128} << 20;
    // Half a percent more, as the kernel's count is not exact. It counts pages of other files too,
    // so it can pass the size: the bar stays at 100 %.
    for (const auto& [permille, shown] :
         {std::pair(std::size_t{575}, "\r[######################                  ] 57 %"),
          {1025, "\r[########################################] 100 %"}}) {
        const ScopedTerminal terminal(STDERR_FILENO);
        const int file = anonymousFile("");
        const std::size_t read = size / 1000 * permille;
        ASSERT_EQ(::ftruncate(file, static_cast<off_t>(read)), 0);
        const MappingProgress progress(size);
        void* mapping = ::mmap(nullptr, read, PROT_READ, MAP_SHARED, file, 0);
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        for (std::size_t offset = 0; offset < read; offset += page) {
            EXPECT_EQ(static_cast<const char*>(mapping)[offset], '\0');
        }
        terminal.waitFor(shown);
        ::munmap(mapping, read);
        ::close(file);
    }
}

TEST(MappingProgress, LeavesNoFileOpen) {
    const auto before = openFiles();
    { const MappingProgress progress(0); }
    EXPECT_EQ(openFiles(), before);
}

TEST(MappingProgress, DrawsNothingWithoutATerminal) {
    testing::internal::CaptureStderr();
    { const MappingProgress progress(MappingProgress::quietSize + 1); }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(MappingProgress, DrawsNothingForASmallFile) {
    const ScopedTerminal terminal(STDERR_FILENO);
    { const MappingProgress progress(64 << 20); }
    std::fputs("end", stderr);
    EXPECT_EQ(terminal.waitFor("end"), "end");
}

TEST(MappingProgress, DrawsNothingWhereNoThreadCanBeHad) {
    const ScopedTerminal terminal(STDERR_FILENO);
    ScopedFailingCalls calls;
    calls.blockLimit = 0;
    EXPECT_NO_THROW(MappingProgress(MappingProgress::quietSize + 1));
}

}  // namespace
