// Files that another process changes while a command reads them.

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include "tests/support/failing_calls.h"
#include "tests/support/project_key.h"
#include "tests/support/signature_judge.h"
#include "tests/support/signature_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/command_run.h"
#include "tests/unit/tools/cut_report.h"
#include "tools/commands/digest_command.h"
#include "tools/commands/sign_command.h"
#include "tools/commands/verify_command.h"
#include "tools/exit_status.h"

namespace {

class SignedFile : public testing::Test {
protected:
    /// The run in which the file is cut before the system is asked this number of times about it.
    CommandEnd runAndCut(const std::function<CommandEnd()>& command, unsigned number) const {
        folder.write("letter", letter);
        ScopedFailingCalls calls;
        calls.beforeStatus = [&](unsigned call) {
            if (call == number) {
                std::filesystem::resize_file(path, letter.size() / 2);
            }
        };
        return command();
    }

    /// The command tells of a file that is cut behind its back at any time, and says nothing else
    /// then, unless it takes the shorter file for the whole one.
    void expectTold(const std::function<CommandEnd()>& command) const {
        std::map<std::string, unsigned> messages;
        constexpr unsigned moreThanAreAsked = 20;
        for (unsigned number = 1; number <= moreThanAreAsked; ++number) {
            const CommandEnd end = runAndCut(command, number);
            if (end.status == exitFailed) {
                EXPECT_EQ(end.output, "");
                ++messages[end.errors];
            }
        }
        const std::string start = "projectctl: " + path + ": ";
        EXPECT_EQ(messages[start + "was cut while it was read\n"], 1U);
        EXPECT_EQ(messages[start + "became shorter while it was mapped\n"], 1U);
        EXPECT_EQ(messages.size(), 2U);
    }

    const TemporaryFolder folder;
    const ProjectKey key = randomProjectKey();
    const std::string project = folder.write("project", projectBytes(keyAttributes(key)));
    const Bytes letter = Bytes(1000, 'a');
    const std::string path = folder.write("letter", letter);
};

}  // namespace

TEST_F(SignedFile, IsNotSignedWhenItIsCutMeanwhile) {
    expectTold([this] { return runCommand(signCommand, {.project = project, .files = {path}}); });
}

TEST_F(SignedFile, IsNotVerifiedWhenItIsCutMeanwhile) {
    const std::string signature = signatureText(judgeSign(key, letter));
    expectTold([&] {
        return runCommand(verifyCommand,
                          {.project = project, .signature = signature, .file = path});
    });
}

TEST_F(SignedFile, IsNotDigestedWhenItIsCutMeanwhile) {
    expectTold([this] { return runCommand(digestCommand, {.file = path, .json = true}); });
}

TEST_F(SignedFile, IsLeftWhereItIsReadAndHasLostPages) {
    const ScopedCutReport report;
    unsigned told = 0;
    constexpr unsigned moreThanAreAsked = 20;
    for (unsigned number = 1; number <= moreThanAreAsked; ++number) {
        folder.write("letter", Bytes(1'000'000, 'a'));
        ScopedFailingCalls calls;
        calls.afterStatus = [&](unsigned call) {
            if (call == number) {
                std::filesystem::resize_file(path, 1);
            }
        };
        const CommandEnd end = runCommand(digestCommand, {.file = path, .json = true});
        told += end.errors == "projectctl: " + path + ": was cut while it was read\n" ? 1 : 0;
    }
    EXPECT_EQ(told, 1U);
}
