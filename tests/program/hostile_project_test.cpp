// What a project that is made to cost as much as can be costs a request.

#include "tests/support/hostile_project.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <iostream>

#include "core/entry.h"
#include "tests/program/sign_program.h"
#include "tests/support/project_key.h"
#include "tests/support/signature_text.h"
#include "tests/support/temporary_folder.h"

namespace {

using Time = std::chrono::microseconds;

constexpr std::size_t fileSize = 64UL << 20;
constexpr int attempts = 3;  // of which the fastest counts: others share the machine

Time processorTime() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + Time(now.tv_nsec / 1000);
}

/// What it takes to digest as many bytes, which a request cannot do without.
Time digestTime() {
    static const Time fastest = [] {
        const Bytes bytes(fileSize, 1);
        Bytes digest(16);
        Time least = Time::max();
        for (int attempt = 0; attempt < attempts; ++attempt) {
            const Time start = processorTime();
            coreEntry::md5Digest(bytes.data(), bytes.size(), digest.data());
            least = std::min(least, processorTime() - start);
        }
        return least;
    }();
    return fastest;
}

class ProgramHostileProject : public testing::TestWithParam<HostileProject> {};

TEST_P(ProgramHostileProject, IsSignedUnderWithinBounds) {
    const TemporaryFolder folder;
    const ProjectKey key = randomProjectKey();
    const std::string path =
        folder.write("project", hostileBytes(GetParam(), fileSize, keyAttributes(key)));
    Time least = Time::max();
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const ProgramEnd end =
            request(InputKind::form, {.project = path, .encoding = "plain", .data = "abc"});
        const std::string signature = answeredSignature(end);
        EXPECT_TRUE(judgeAccepts(key, {'a', 'b', 'c'}, readSignatureText(signature)));
        EXPECT_LE(end.peakMemory, 3 * fileSize);
        least = std::min(least, end.processorTime);
    }
    EXPECT_LE(least, 6 * digestTime());
    std::cout << GetParam().name << ": "
              << static_cast<double>(least.count()) / static_cast<double>(digestTime().count())
              << " times the digest" << std::endl;
}

INSTANTIATE_TEST_SUITE_P(, ProgramHostileProject, testing::ValuesIn(hostileProjects()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
