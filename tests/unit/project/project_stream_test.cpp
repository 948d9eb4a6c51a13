#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <utility>

#include "project/project_file.h"
#include "project/stream.h"
#include "tests/support/attribute_values.h"
#include "tests/support/failing_calls.h"
#include "tests/support/open_files.h"
#include "tests/support/project_builder.h"
#include "tests/support/temporary_folder.h"

namespace {

/// Each call on a stream that an operation makes fails once.
class ProjectStream : public testing::Test {
protected:
    /// Runs the operation with its first call failing, then its second, and so on, until no call is
    /// left to fail. `afterwards` gets the number of the call and the operation's answer. Returns
    /// how many calls failed.
    static unsigned failEachCall(const std::function<bool()>& operation,
                                 const std::function<void(unsigned, bool)>& afterwards) {
        for (unsigned number = 1;; ++number) {
            const auto before = openFiles();
            bool failed = false;
            bool answer = false;
            {
                ScopedFailingCalls calls;
                calls.failingStreamCall = number;
                answer = operation();
                failed = calls.streamCalls >= number;
            }
            EXPECT_EQ(openFiles(), before) << "call " << number;
            if (!failed) {
                EXPECT_TRUE(answer);
                return number - 1;
            }
            afterwards(number, answer);
        }
    }

    TemporaryFolder folder;
    ProjectFile file;
    const std::string path = folder.file("project");
};

TEST_F(ProjectStream, ThatFailsInAnyCallOfLoadLeavesTheStoreEmpty) {
    // Values in another order than their entries, so that each is looked for.
    ProjectImage image = projectImage(someValues);
    std::swap(image.directory[0], image.directory[1]);
    folder.write("project", image.bytes());
    const std::string good = folder.write("good", projectBytes(someValues));
    const unsigned calls = failEachCall([this] { return file.load(path.c_str()); },
                                        [&](unsigned number, bool answer) {
                                            EXPECT_FALSE(answer) << "call " << number;
                                            EXPECT_TRUE(file.isEmpty()) << "call " << number;
                                            EXPECT_EQ(file.path, "") << "call " << number;
                                            EXPECT_TRUE(file.load(good.c_str()))
                                                << "call " << number;
                                        });
    EXPECT_EQ(calls, 6U);
    EXPECT_EQ(valuesOf(file), someValues);
    EXPECT_EQ(file.path, path);
}

TEST_F(ProjectStream, ThatFailsInAnyCallOfSealHeaderLeavesTheFileAsItIs) {
    for (const auto& [id, value] : someValues) {
        file.insertAttribute(id, value);
    }
    const Bytes sealed = projectBytes(someValues);
    Bytes unsealed = sealed;
    std::fill(unsealed.begin(), unsealed.begin() + 24, std::uint8_t{0xEE});
    folder.write("project", unsealed);
    const auto seal = [this] {
        const Stream stream(std::fopen(path.c_str(), "r+b"));
        return stream != nullptr && file.sealHeader(stream.get());
    };
    const unsigned calls = failEachCall(seal, [&](unsigned number, bool answer) {
        EXPECT_FALSE(answer) << "call " << number;
        EXPECT_EQ(fileBytes(path), unsealed) << "call " << number;
    });
    EXPECT_GE(calls, 5U);
    EXPECT_EQ(fileBytes(path), sealed);
    EXPECT_EQ(valuesOf(file), someValues);
}

TEST_F(ProjectStream, ThatFailsInAnyCallOfCreateMakesNoProject) {
    const unsigned calls = failEachCall([this] { return file.create(path.c_str()); },
                                        [&](unsigned number, bool answer) {
                                            EXPECT_FALSE(answer) << "call " << number;
                                            EXPECT_TRUE(file.isEmpty());
                                            EXPECT_EQ(file.path, "");
                                            EXPECT_FALSE(file.load(path.c_str()));
                                        });
    EXPECT_EQ(calls, 2U);
    EXPECT_TRUE(file.load(path.c_str()));
}

}  // namespace
