#include "tools/commands/digest_command.h"

#include <gtest/gtest.h>
#include <openssl/ripemd.h>

#include <filesystem>
#include <string>

#include "tests/support/hexadecimal.h"
#include "tests/support/random_operands.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/command_run.h"
#include "tests/unit/tools/scoped_terminal.h"
#include "tools/exit_status.h"

namespace {

CommandEnd digest(const std::string& path, bool json = false) {
    return runCommand(digestCommand, {.file = path, .json = json});
}

CommandEnd done(const std::string& output) {
    return {.status = exitDone, .output = output, .errors = ""};
}

CommandEnd failed(const std::string& message) {
    return {.status = exitFailed, .output = "", .errors = "projectctl: " + message + "\n"};
}

std::string hexadecimal(const Bytes& bytes) {
    return hexadecimalFromBytes(bytes.data(), bytes.size());
}

class DigestCommand : public testing::Test {
protected:
    const TemporaryFolder folder;
};

TEST_F(DigestCommand, WritesTheDigestReversed) {
    for (const std::size_t size : {1U, 20U, 55U, 56U, 64U, 100000U}) {
        const Bytes data = randomBytes(size);
        Bytes published(RIPEMD160_DIGEST_LENGTH);
        RIPEMD160(data.data(), data.size(), published.data());
        const Bytes reversed(published.rbegin(), published.rend());
        const std::string path = folder.write("data", data);
        EXPECT_EQ(digest(path), done({reversed.begin(), reversed.end()}));
        const std::string json = R"({"digest":")" + hexadecimal(reversed) + R"(","ripemd160":")" +
                                 hexadecimal(published) + "\"}\n";
        EXPECT_EQ(digest(path, true), done(json));
        const ScopedInput input(std::string(data.begin(), data.end()));
        EXPECT_EQ(digest("-", true), done(json));
    }
}

TEST_F(DigestCommand, TakesWhatTheProgramWouldSignOfALargeFile) {
    const Bytes first = {1, 2, 3, 4, 5};
    const CommandEnd small = digest(folder.write("small", first));
    const std::string path = folder.write("large", first);
    std::filesystem::resize_file(path, (std::uintmax_t{1} << 32) + first.size());
    const CommandEnd large = digest(path);
    EXPECT_EQ(large.output, small.output);
    EXPECT_EQ(large.status, exitDone);
    EXPECT_EQ(large.errors,
              "projectctl: " + path + ": only the first 5 bytes of 4294967301 count\n");
}

TEST_F(DigestCommand, WritesNoBytesToATerminal) {
    const std::string path = folder.write("data", {1, 2, 3});
    const ScopedTerminal terminal(STDOUT_FILENO);
    testing::internal::CaptureStderr();
    EXPECT_EQ(digestCommand({.file = path}), exitFailed);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "projectctl: standard output is a terminal, and a digest is binary; redirect it to "
              "a file, or use --json\n");
}

TEST_F(DigestCommand, RefusesWhatCannotBeSigned) {
    const std::string empty = folder.write("empty", {});
    EXPECT_EQ(digest(empty), failed(empty + ": is empty"));
    const std::string missing = folder.file("missing");
    EXPECT_EQ(digest(missing).status, exitFailed);
    EXPECT_TRUE(digest(missing).errors.starts_with("projectctl: " + missing + ": "));
    const ScopedInput input("");
    EXPECT_EQ(digest("-"), failed("standard input: is empty"));
}

}  // namespace
