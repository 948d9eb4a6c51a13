// Names of files and words of a command line that would steer a terminal, or forge a message.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/projectctl/projectctl_run.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"

namespace {

const std::string hostile = "\x1b[31mred\nprojectctl: sound\r\x7f\xc2\x9b\xff\xc3\xa9";
const std::string shown = "\\x1B[31mred\\x0Aprojectctl: sound\\x0D\\x7F\\xC2\\x9B\\xFF\xc3\xa9";

class HostileNames : public testing::Test {
protected:
    HostileNames() { ::chmod(project.c_str(), 0600); }

    const TemporaryFolder folder;
    const std::string name = folder.file(hostile);
    const std::string project =
        folder.write(hostile, projectBytes(keyAttributes(randomProjectKey())));
    const std::string missing = name + "-missing";
};

bool steersTerminals(const std::string& text) {
    return std::any_of(text.begin(), text.end(),
                       [](char byte) {
                           const auto value = static_cast<unsigned char>(byte);
                           return (value < 0x20 && byte != '\n') || value == 0x7F || value == 0xFF;
                       }) ||
           text.find("\xc2\x9b") != std::string::npos;
}

TEST_F(HostileNames, AreShownEscapedByEveryCommand) {
    const std::vector<std::vector<std::string>> calls = {
        {"create", project},
        {"create", missing + "/x"},
        {"create", missing, "--from-scalar", project},
        {"create", missing, "--from-scalar", missing},
        {"create", missing, "--base", hostile},
        {"show", project},
        {"show", missing},
        {"check", project},
        {"check", missing},
        {"strip", project, project},
        {"strip", missing, missing},
        {"sign", project, missing},
        {"sign", missing, project},
        {"verify", project, "AAAA", missing},
        {"verify", missing, "AAAA", project},
        {"verify", project, "--check", missing},
        {"verify", project, "--signature-file", missing},
        {"sign", project, missing, missing},
        {"sign", project, project, "-o", project},
        {"explain", "--body", missing},
        {"explain", "--project", missing, "--data", "x", "--json"},
        {"explain", "--project", project, "--file", missing},
        {"explain", "--project", project, "--data", "x", "--data-encoding", hostile},
        {"export", missing},
        {"digest", missing},
        {"convert", missing, "--from", "der", "--to", "hex"},
        {"convert", "AAAA", "--to", hostile},
        {"show", project, hostile},
        {hostile},
        {"--" + hostile}};
    for (const std::vector<std::string>& arguments : calls) {
        const ProgramEnd end = runProjectctl(arguments);
        const std::string said = end.output + end.errors;
        EXPECT_NE(said.find("\\x1B"), std::string::npos) << testing::PrintToString(arguments);
        EXPECT_FALSE(steersTerminals(said)) << testing::PrintToString(arguments) << said;
        EXPECT_EQ(said.find("\nprojectctl: sound"), std::string::npos) << said;
    }
}

TEST_F(HostileNames, KeepWhatCanBeShown) {
    EXPECT_TRUE(isFoundSound(runProjectctl({"check", project}), folder.path() + "/" + shown));
    EXPECT_TRUE(endedWith(runProjectctl({"check", missing}), 2, "",
                          "projectctl: " + folder.path() + "/" + shown +
                              "-missing: cannot be opened: No such file "
                              "or directory\n"));
}

TEST_F(HostileNames, StandInJsonAsAscii) {
    const ProgramEnd end = runProjectctl({"check", project, "--json"});
    EXPECT_TRUE(std::all_of(end.output.begin(), end.output.end() - 1, [](char byte) {
        return byte >= ' ' && byte <= '~';
    })) << end.output;
    EXPECT_NE(end.output.find(R"(\u001b[31mred\nprojectctl: sound\r\u007f\u009b\ufffd\u00e9)"),
              std::string::npos)
        << end.output;
}

}  // namespace
