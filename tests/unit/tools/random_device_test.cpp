#include "tools/files/random_device.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/command_run.h"
#include "tools/commands/check_command.h"
#include "tools/commands/create_command.h"
#include "tools/commands/explain_command.h"
#include "tools/commands/sign_command.h"
#include "tools/exit_status.h"

namespace {

const std::string advice = "; make the kernel's device there (mknod -m 666 /dev/urandom c 1 9)";

TEST(RandomDeviceRefusal, IsNothingOnThisMachineAndWithoutAFault) {
    EXPECT_EQ(randomDeviceRefusal(), std::nullopt);
    EXPECT_EQ(randomDeviceRemark(), std::nullopt);
    EXPECT_EQ(randomDeviceRefusal(RandomDeviceFault::none), std::nullopt);
}

TEST(RandomDeviceRefusal, NamesEachFaultAndWhatToDo) {
    const std::string either = "/dev/urandom, or /dev/random if that cannot be opened: ";
    for (const auto& [fault, words] :
         {std::pair<RandomDeviceFault, std::string>{
              RandomDeviceFault::missing,
              "/dev/urandom and /dev/random: neither can be opened, and the clock alone is not a "
              "secret"},
          {RandomDeviceFault::foreign,
           either + "not the kernel's random device, so keys and nonces could be guessed"},
          {RandomDeviceFault::unreadable,
           either + "gives less than a seed takes, and known bytes would stand in"}}) {
        EXPECT_EQ(randomDeviceRefusal(fault), words + advice);
        EXPECT_EQ(randomDeviceRemark(fault),
                  "signing here would give the private scalar away: " + words + advice);
    }
}

/// Commands where zeros stand in the place of the random device.
class UselessDevice : public testing::Test {
protected:
    UselessDevice() {
        std::filesystem::permissions(project, std::filesystem::perms{0600});
        calls.openedInstead["/dev/urandom"] = "/dev/zero";
    }

    const TemporaryFolder folder;
    const std::string project =
        folder.write("project", projectBytes(keyAttributes(randomProjectKey())));
    const std::string letter = folder.write("letter", {'x'});
    const std::string refusal = *randomDeviceRefusal(RandomDeviceFault::foreign);
    const std::string remark = *randomDeviceRemark(RandomDeviceFault::foreign);
    ScopedFailingCalls calls;
};

TEST_F(UselessDevice, MakesNoKeyAndNoSignature) {
    const CommandEnd refused = {
        .status = exitFailed, .output = "", .errors = "projectctl: " + refusal + "\n"};
    CreateOptions create;
    create.file = folder.file("new");
    EXPECT_EQ(runCommand(createCommand, create), refused);
    EXPECT_FALSE(std::filesystem::exists(create.file));
    EXPECT_EQ(runCommand(signCommand, SignOptions{.project = project, .files = {letter}}), refused);
}

TEST_F(UselessDevice, IsRemarkedOnWhereAProjectSigns) {
    const CommandEnd checked = runCommand(checkCommand, CheckOptions{.file = project});
    EXPECT_EQ(checked.status, exitDone);
    EXPECT_TRUE(checked.output.ends_with(project + ": sound\n")) << checked.output;
    EXPECT_EQ(checked.errors, "projectctl: " + remark + "\n");
    ExplainOptions signing;
    signing.project = project;
    signing.data = "x";
    EXPECT_NE(runCommand(explainCommand, signing).output.find("Note: " + remark + ".\n"),
              std::string::npos);
    ExplainOptions verifying = signing;
    verifying.signature = "AAAA";
    EXPECT_EQ(runCommand(explainCommand, verifying).output.find(remark), std::string::npos);
}

}  // namespace
