#include "tools/files/cut_file.h"

#include <gtest/gtest.h>

#include <sys/mman.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "engine/mapped_file.h"
#include "tests/support/standard_streams.h"
#include "tests/support/temporary_folder.h"
#include "tools/exit_status.h"

namespace {

/// Reads the last byte of a file that has lost it.
void readWhatWasCut(const TemporaryFolder& folder) {
    constexpr std::size_t size = 100'000;
    const std::string path = folder.write("file", std::vector<std::uint8_t>(size));
    MappedInput input;
    const std::span<const std::uint8_t> bytes = mapInputFile(input, path.c_str());
    std::filesystem::resize_file(path, 1);
    [[maybe_unused]] const volatile std::uint8_t last = bytes[size - 1];
}

/// Reads what an empty file has lost, or nothing. Returns whether that was read.
bool readMapping(bool isCut) {
    void* mapping = ::mmap(nullptr, 1, PROT_READ, MAP_SHARED, anonymousFile(""), 0);
    return readUncut([=] {
        if (isCut) {
            [[maybe_unused]] const char lost = *static_cast<const volatile char*>(mapping);
        }
    });
}

void expectMessage(const std::string& name, const std::string& message) {
    const TemporaryFolder folder;
    EXPECT_EXIT(
        {
            reportCutFile();
            if (!name.empty()) {
                nameReadFile(name);
            }
            readWhatWasCut(folder);
        },
        testing::ExitedWithCode(exitFailed), testing::Eq(message));
}

TEST(CutFile, EndsTheProcessWithAMessage) {
    expectMessage("", "projectctl: a file: was cut while it was read\n");
    expectMessage("letter", "projectctl: letter: was cut while it was read\n");
    expectMessage("\x1b[m", "projectctl: \\x1B[m: was cut while it was read\n");
}

TEST(CutFile, CanBeLeftWhereItIsReadBySeveralThreads) {
    const TemporaryFolder folder;
    for (const bool isLastOneCut : {false, true}) {
        EXPECT_EXIT(
            {
                reportCutFile();
                std::atomic<int> left = 0;
                {
                    std::vector<std::jthread> threads;
                    for (int i = 0; i < 4; ++i) {
                        threads.emplace_back([&left] {
                            for (const bool isCut : {true, false, true}) {
                                left += readMapping(isCut) ? 0 : 1;
                            }
                        });
                    }
                }
                readMapping(isLastOneCut);
                nameReadFile(std::to_string(left));
                // Outside of such a reading the process ends as before.
                readWhatWasCut(folder);
            },
            testing::ExitedWithCode(exitFailed),
            testing::Eq("projectctl: 8: was cut while it was read\n"));
    }
}

TEST(CutFile, IsNamedWholeUpToTheLongestPath) {
    std::string escapes;
    constexpr std::size_t longestPath = 4095;
    for (std::size_t i = 0; i < longestPath; ++i) {
        escapes += "\\x01";
    }
    expectMessage(std::string(longestPath, '\1'),
                  "projectctl: " + escapes + ": was cut while it was read\n");
}

}  // namespace
