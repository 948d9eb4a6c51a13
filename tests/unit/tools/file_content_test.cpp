#include "tools/files/file_content.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <string>

#include "tests/support/open_files.h"
#include "tests/support/random_operands.h"
#include "tests/support/standard_streams.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/scoped_terminal.h"
#include "tools/files/small_file.h"

namespace {

class ReadContent : public testing::Test {
protected:
    /// The content, or why there is none.
    static std::string contentOf(const std::string& path, std::size_t most = std::string::npos) {
        std::string content;
        const std::optional<std::string> failure = readContent(path, content, most);
        return failure.value_or(content);
    }

    const TemporaryFolder folder;
    const Bytes bytes = randomBytes(3 * BUFSIZ + 1);
    const std::string text{bytes.begin(), bytes.end()};
    const std::string path = folder.write("file", bytes);
};

TEST_F(ReadContent, TakesAFileAndStandardInputToTheirEnd) {
    EXPECT_EQ(contentOf(path), text);
    const ScopedInput input(text);
    EXPECT_EQ(contentOf("-"), text);
}

TEST_F(ReadContent, TakesNoMoreThanIsWanted) {
    for (const std::size_t most : {std::size_t{1}, std::size_t{BUFSIZ}, std::size_t{BUFSIZ + 1},
                                   text.size() - 1, text.size(), text.size() + 1}) {
        EXPECT_EQ(contentOf(path, most), text.substr(0, most)) << most;
    }
}

TEST_F(ReadContent, TellsWhyThereIsNone) {
    const std::string missing = folder.file("missing");
    EXPECT_EQ(contentOf(missing), missing + ": No such file or directory");
    EXPECT_EQ(contentOf(folder.path()), folder.path() + ": Is a directory");
}

TEST_F(ReadContent, SaysThatItWaitsAtATerminal) {
    const ScopedInput input("");
    const ScopedTerminal terminal(STDIN_FILENO);
    terminal.type("typed\n\4");
    testing::internal::CaptureStderr();
    EXPECT_EQ(contentOf("-"), "typed\n");
    EXPECT_EQ(contentOf(path), text);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "projectctl: waiting for standard input; Ctrl-D at the start of a line ends it\n");
}

TEST_F(ReadContent, LeavesNoFileOpen) {
    const auto before = openFiles();
    contentOf(path);
    contentOf(folder.path());
    EXPECT_EQ(openFiles(), before);
}

TEST(ReadSmallFile, GivesUpOnAFileThatHasNoEnd) {
    const SmallFile file = readSmallFile("/dev/zero", "signature");
    EXPECT_EQ(file.failure, "/dev/zero: has more than 4096 bytes, too many for a signature");
    EXPECT_EQ(file.content, "");
}

TEST(ReadSmallFile, TakesWhatIsNotTooLong) {
    const TemporaryFolder folder;
    const SmallFile file = readSmallFile(folder.write("file", Bytes(4096, 'a')), "signature");
    EXPECT_EQ(file.failure, std::nullopt);
    EXPECT_EQ(file.content, std::string(4096, 'a'));
    const std::string missing = folder.file("missing");
    EXPECT_EQ(readSmallFile(missing, "signature").failure, missing + ": No such file or directory");
}

}  // namespace
