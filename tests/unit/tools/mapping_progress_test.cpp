#include "tools/files/mapping_progress.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <thread>

#include "tests/support/failing_calls.h"
#include "tests/unit/tools/file_calls.h"
#include "tests/unit/tools/scoped_terminal.h"

namespace {

TEST(MappingProgress, DrawsABarAndTakesItAway) {
    const ScopedTerminal terminal(STDERR_FILENO);
    {
        const MappingProgress progress(MappingProgress::quietSize + 1);
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

TEST(MappingProgress, DrawsNothingWithoutATerminal) {
    testing::internal::CaptureStderr();
    { const MappingProgress progress(MappingProgress::quietSize + 1); }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(MappingProgress, DrawsNothingForASmallFile) {
    const ScopedTerminal terminal(STDERR_FILENO);
    { const MappingProgress progress(MappingProgress::quietSize); }
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
