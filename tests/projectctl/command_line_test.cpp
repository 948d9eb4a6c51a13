// The reading of arguments: what is refused, and in which words.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/projectctl/projectctl_run.h"
#include "tests/support/project_builder.h"
#include "tests/support/temporary_folder.h"

namespace {

using Arguments = std::vector<std::string>;

const std::vector<std::string> commands = {"create", "show",    "check",  "strip",   "sign",
                                           "verify", "explain", "export", "convert", "digest"};

/// These arguments are refused with this message and the help that tells more, and nothing else
/// happens.
testing::AssertionResult isRefused(const Arguments& arguments, const std::string& message) {
    const bool isCommand = std::count(commands.begin(), commands.end(), arguments.front()) != 0;
    return endedWith(runProjectctl(arguments), 2, "",
                     "projectctl: " + message + "; see 'projectctl " +
                         (isCommand ? arguments.front() + " " : "") + "--help'\n");
}

/// These arguments name no command, which is told in these words and with the list of commands.
testing::AssertionResult isNoCommand(const Arguments& arguments, const std::string& message) {
    return endedWith(runProjectctl(arguments), 2, "",
                     "projectctl: " + message + "\n\n" + runProjectctl({"--help"}).output);
}

const std::string usageOfCheck = "; usage: projectctl check [OPTION]... FILE";

TEST(ProjectctlCommandLine, PrintsTheListOfCommandsWithoutOne) {
    EXPECT_TRUE(endedWith(runProjectctl({}), 2, "", runProjectctl({"--help"}).output));
}

TEST(ProjectctlCommandLine, PrintsTheListOfCommandsForOneThatThereIsNot) {
    EXPECT_TRUE(isNoCommand({"remove"}, "unknown command 'remove'"));
    EXPECT_TRUE(isNoCommand({"sing", "a"}, "unknown command 'sing' (did you mean 'sign'?)"));
    EXPECT_TRUE(isNoCommand({"Create", "x"}, "unknown command 'Create' (did you mean 'create'?)"));
    EXPECT_TRUE(isNoCommand({"-", "--json"}, "unknown command '-'"));
    EXPECT_TRUE(isNoCommand({"--", "show"}, "unknown command '--'"));
    EXPECT_TRUE(isRefused({"--wrong", "show"}, "unknown option '--wrong'"));
    EXPECT_TRUE(isRefused({"--versoin"}, "unknown option '--versoin' (did you mean '--version'?)"));
}

TEST(ProjectctlCommandLine, TakesHelpForACommand) {
    for (const Arguments& list : {Arguments{"help"}, {"help", "help"}, {"help", "--help"}}) {
        EXPECT_TRUE(endedWith(runProjectctl(list), 0, runProjectctl({"--help"}).output));
    }
    for (const std::string& command : commands) {
        EXPECT_TRUE(endedWith(runProjectctl({"help", command}), 0,
                              runProjectctl({command, "--help"}).output));
    }
    EXPECT_TRUE(isNoCommand({"help", "shwo"}, "unknown command 'shwo' (did you mean 'show'?)"));
}

TEST(ProjectctlCommandLine, NamesAnUnknownOptionBeforeWhatIsMissing) {
    EXPECT_TRUE(isRefused({"show", "--wrong"}, "unknown option '--wrong'"));
    EXPECT_TRUE(isRefused({"create", "-x"}, "unknown option '-x'"));
    EXPECT_TRUE(isRefused({"create", "--bases", "standard", "--wrong"},
                          "unknown option '--bases' (did you mean '--base'?)"));
    EXPECT_TRUE(
        isRefused({"explain", "--bodi", "-"}, "unknown option '--bodi' (did you mean '--body'?)"));
    EXPECT_TRUE(isRefused({"convert", "a", "--too", "der"},
                          "unknown option '--too' (did you mean '--to'?)"));
}

TEST(ProjectctlCommandLine, WantsTheArgumentsOfACommand) {
    const std::string ofStrip = "; usage: projectctl strip [OPTION]... FILE OUT";
    for (const std::string command : {"create", "show", "check", "export"}) {
        EXPECT_TRUE(isRefused(
            {command}, "FILE is required; usage: projectctl " + command + " [OPTION]... FILE"));
    }
    EXPECT_TRUE(isRefused({"strip"}, "FILE is required" + ofStrip));
    EXPECT_TRUE(isRefused({"strip", "a"}, "OUT is required" + ofStrip));
    EXPECT_TRUE(isRefused(
        {"sign"}, "PROJECT is required; usage: projectctl sign [OPTION]... PROJECT [FILE]..."));
    EXPECT_TRUE(isRefused({"verify"}, "PROJECT is required"));
    EXPECT_TRUE(isRefused({"verify", "a"}, "SIGNATURE is required"));
    EXPECT_TRUE(isRefused({"convert"}, "SIGNATURE is required"));
    EXPECT_TRUE(isRefused({"convert", "a"}, "--to or --json is required"));
    EXPECT_TRUE(isRefused({"explain"}, "--body, --project or --rules is required"));
    EXPECT_TRUE(isRefused({"explain", "--project", "a"}, "--data or --file is required"));
    EXPECT_TRUE(isRefused({"explain", "--project"}, "--project is given no value"));
}

TEST(ProjectctlCommandLine, RefusesWhatMeansNothing) {
    const std::vector<Arguments> sufficient = {{"create", "a"},
                                               {"show", "a"},
                                               {"check", "a"},
                                               {"strip", "a", "b"},
                                               {"sign", "a"},
                                               {"verify", "a", "b"},
                                               {"export", "a"},
                                               {"convert", "a", "--to", "der"},
                                               {"explain", "--body", "a"},
                                               {"digest", "a"}};
    for (Arguments arguments : sufficient) {
        arguments.emplace_back("--wrong");
        EXPECT_TRUE(isRefused(arguments, "unknown option '--wrong'"));
    }
    EXPECT_TRUE(isRefused({"check", "a", "b"}, "unexpected argument 'b'" + usageOfCheck));
    EXPECT_TRUE(isRefused({"check", "a", "-", "b"}, "unexpected argument '-'" + usageOfCheck));
    EXPECT_TRUE(
        isRefused({"check", "a", "show", "b"}, "unexpected argument 'show'" + usageOfCheck));
    EXPECT_TRUE(isRefused({"convert", "--digest-of", "a"}, "unknown option '--digest-of'"));
    EXPECT_TRUE(isRefused({"check", "a", "--secret"}, "unknown option '--secret'"));
    EXPECT_TRUE(isRefused({"--json", "check", "a"}, "unknown option '--json'"));
    EXPECT_TRUE(isRefused({"create", "a", "--base", "other"},
                          "--base: 'other' is not one of random, standard"));
    EXPECT_TRUE(
        isRefused({"convert", "a", "--to", "pem"}, "--to: 'pem' is not one of text, der, hex"));
    EXPECT_TRUE(isRefused({"convert", "a", "--from", "0", "--to", "der"},
                          "--from: '0' is not one of text, der, hex"));
}

TEST(ProjectctlCommandLine, RefusesAnOptionWithoutItsValue) {
    EXPECT_TRUE(isRefused({"explain", "--project", "a", "--data=", "--signature=AAAA"},
                          "--data is given no value"));
    EXPECT_TRUE(isRefused({"create", "--base=", "standard", "a"}, "--base is given no value"));
    EXPECT_TRUE(isRefused({"create", "--from-scalar=", "a"}, "--from-scalar is given no value"));
    // Behind "--" it is a name, and at the end of a value it is part of it.
    EXPECT_EQ(runProjectctl({"check", "--", "--missing="}).errors,
              "projectctl: --missing=: cannot be opened: No such file or directory\n");
    EXPECT_EQ(
        runProjectctl({"explain", "--project=missing", "--data=a=", "--signature=AAA="}).status, 0);
}

TEST(ProjectctlCommandLine, NamesAWordAsItStandsWhateverItMeansToTheParser) {
    EXPECT_TRUE(isRefused({"show", "a", "[b]"},
                          "unexpected argument '[b]'; usage: projectctl show [OPTION]... FILE"));
    EXPECT_TRUE(isRefused({"show", "a", "++"},
                          "unexpected argument '++'; usage: projectctl show [OPTION]... FILE"));
    EXPECT_TRUE(isRefused({"create", "--base", "[random]", "a"},
                          "--base: '[random]' is not one of random, standard"));
    EXPECT_TRUE(isNoCommand({"++"}, "unknown command '++'"));
}

TEST(ProjectctlCommandLine, RefusesAValueOfAFlag) {
    EXPECT_TRUE(isRefused({"show", "a", "--secret=yes"}, "--secret takes no value"));
    EXPECT_TRUE(isRefused({"--version=false"}, "a command is required"));
    EXPECT_TRUE(isRefused({"check", "a", "--json=1"}, "--json takes no value"));
}

TEST(ProjectctlCommandLine, RefusesRepetition) {
    const std::vector<Arguments> repeated = {
        {"create", "a", "--base", "random", "--base", "random"},
        {"create", "a", "--from-scalar", "b", "--from-scalar", "c"},
        {"show", "a", "--secret", "--secret"},
        {"show", "a", "--json", "--json"},
        {"check", "a", "--json", "--json"},
        {"sign", "a", "--json", "--json"},
        {"sign", "a", "--output", "b", "--output", "c"},
        {"verify", "a", "--check", "b", "--check", "c"},
        {"verify", "a", "--check", "b", "--quiet", "--quiet"},
        {"verify", "a", "b", "--json", "--json"},
        {"export", "a", "--private", "--private"},
        {"convert", "a", "--to", "der", "--to", "hex"},
        {"convert", "a", "--to", "der", "--from", "hex", "--from", "hex"},
        {"digest", "a", "--json", "--json"},
        {"explain", "--body", "a", "--body", "b"},
        {"explain", "--project", "a", "--data", "b", "--data", "c"}};
    for (const Arguments& arguments : repeated) {
        const ProgramEnd end = runProjectctl(arguments);
        const std::size_t at = end.errors.find(" is given 2 times");
        EXPECT_EQ(end.status, 2);
        ASSERT_NE(at, std::string::npos) << end.errors;
        const std::string option = end.errors.substr(12, at - 12);
        EXPECT_EQ(std::count(arguments.begin(), arguments.end(), option), 2) << option;
    }
}

TEST(ProjectctlCommandLine, RefusesConflicts) {
    EXPECT_TRUE(isRefused({"explain", "--body", "a", "--project", "b", "--data", "c"},
                          "--body and --project cannot be used together"));
    EXPECT_TRUE(isRefused({"explain", "--project", "a", "--data", "b", "--file", "c"},
                          "--data and --file cannot be used together"));
    EXPECT_TRUE(
        isRefused({"explain", "--body", "a", "--content-length", "1", "--no-content-length"},
                  "--content-length and --no-content-length cannot be used together"));
    EXPECT_TRUE(isRefused({"verify", "a", "b", "--check", "c"},
                          "SIGNATURE and --check cannot be used together"));
    EXPECT_TRUE(isRefused({"verify", "a", "--signature-file", "b", "--check", "c"},
                          "--signature-file and --check cannot be used together"));
    EXPECT_TRUE(isRefused({"verify", "a", "b", "c", "--signature-file", "d"},
                          "SIGNATURE and --signature-file cannot be used together"));
    for (const Arguments& both : {Arguments{"verify", "a", "--signature-file", "-"},
                                  {"verify", "a", "--signature-file", "-", "-"}}) {
        EXPECT_TRUE(
            isRefused(both, "standard input cannot hold both the signature and what was signed"));
    }
    EXPECT_TRUE(isRefused({"convert", "a", "--to", "der", "--json"},
                          "--to and --json cannot be used together"));
    EXPECT_TRUE(isRefused({"explain", "--rules", "--body", "a", "--wrong"},
                          "--body and --rules cannot be used together"));
}

TEST(ProjectctlCommandLine, RefusesAnOptionWithoutTheOneItBelongsTo) {
    for (const char* option : {"--data", "--file", "--signature"}) {
        EXPECT_TRUE(
            isRefused({"explain", option, "a"}, std::string(option) + " requires --project"));
    }
    for (const char* option : {"--content-type", "--content-length"}) {
        EXPECT_TRUE(isRefused({"explain", "--project", "p", "--data", "d", option, "a"},
                              std::string(option) + " requires --body"));
    }
    EXPECT_TRUE(isRefused({"explain", "--body", "b", "--data-encoding", "plain"},
                          "--data-encoding requires --project"));
    for (const char* option : {"--ignore-missing", "--quiet", "--status"}) {
        EXPECT_TRUE(
            isRefused({"verify", "a", "b", option}, std::string(option) + " requires --check"));
    }
}

TEST(ProjectctlCommandLine, RefusesEmptyPaths) {
    const std::vector<std::pair<Arguments, std::string>> calls = {
        {{"create", ""}, "FILE"},
        {{"create", "a", "--from-scalar", ""}, "--from-scalar"},
        {{"show", ""}, "FILE"},
        {{"check", ""}, "FILE"},
        {{"strip", "", "b"}, "FILE"},
        {{"strip", "a", ""}, "OUT"},
        {{"sign", "", "b"}, "PROJECT"},
        {{"sign", "a", ""}, "FILE"},
        {{"sign", "a", "b", "", "c"}, "FILE"},
        {{"sign", "a", "-o", ""}, "--output"},
        {{"verify", "", "b"}, "PROJECT"},
        {{"verify", "a", "b", ""}, "FILE"},
        {{"verify", "a", "--signature-file", "b", ""}, "FILE"},
        {{"verify", "a", "--signature-file", ""}, "--signature-file"},
        {{"verify", "a", "--check", ""}, "--check"},
        {{"export", ""}, "FILE"},
        {{"explain", "--body", ""}, "--body"},
        {{"digest", ""}, "FILE"}};
    for (const auto& [arguments, name] : calls) {
        EXPECT_TRUE(isRefused(arguments, name + ": the path is empty"));
    }
}

TEST(ProjectctlCommandLine, FailsWhenWhatItPrintsDoesNotGoOut) {
    // More attributes than the stream's buffer holds lines of.
    AttributeValues values;
    for (std::uint32_t id = 0; id < 1000; ++id) {
        values[id] = {1};
    }
    const TemporaryFolder folder;
    const std::string large = folder.write("large", projectBytes(values));
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_NE(full, -1);
    for (const Arguments& arguments :
         {Arguments{"digest", "-"}, {"show", large}, {"--help"}, {"--version"}}) {
        ProgramCall call = projectctlCall(arguments, "data");
        call.outputDescriptor = full;
        EXPECT_TRUE(endedWith(runProgram(call), 2, "",
                              "projectctl: standard output: No space left on device\n"))
            << arguments[0];
    }
    ::close(full);
}

TEST(ProjectctlCommandLine, TakesNoFileForAStandardStreamThatIsClosed) {
    const TemporaryFolder folder;
    ProgramCall call = projectctlCall({"digest", "-"});
    call.input = ProgramCall::Input::closed;
    EXPECT_TRUE(endedWith(runProgram(call), 2, "", "projectctl: standard input: is empty\n"));
    call = projectctlCall({"create", "--from-scalar", "-", folder.file("project")});
    call.input = ProgramCall::Input::closed;
    EXPECT_TRUE(
        endedWith(runProgram(call), 2, "", "projectctl: standard input: holds no digits\n"));
    call = projectctlCall({"digest", "-"}, "data");
    call.outputClosed = true;
    EXPECT_TRUE(
        endedWith(runProgram(call), 2, "", "projectctl: standard output: Bad file descriptor\n"));
}

TEST(ProjectctlCommandLine, ExplainsRulesWithoutARequest) {
    const ProgramEnd end = runProjectctl({"explain", "--rules"});
    EXPECT_EQ(end.status, 0);
    EXPECT_NE(end.output.find("\nsignature.valid: The signature is valid.\n"), std::string::npos);
}

TEST(ProjectctlCommandLine, PrintsItsVersion) {
    EXPECT_TRUE(endedWith(runProjectctl({"--version"}), 0, "projectctl " SIGN_VERSION "\n"));
}

/// The words of a text, whatever lines they stand on.
std::string wordsOf(const std::string& text) {
    std::istringstream stream(text);
    std::string joined;
    std::string word;
    while (stream >> word) {
        joined += word + ' ';
    }
    return joined;
}

TEST(ProjectctlCommandLine, PrintsTheHelpOfEachCommand) {
    // "$ projectctl ..." and what it prints, one after the other.
    std::ifstream file(SIGN_HELP_FILE);
    std::string line;
    std::vector<std::string> told;
    std::vector<std::string> printed;
    while (std::getline(file, line)) {
        const std::string prompt = "$ projectctl ";
        if (line.starts_with(prompt)) {
            const std::string command = line.substr(prompt.size());
            const std::size_t space = command.find(' ');
            const ProgramEnd end =
                space == std::string::npos
                    ? runProjectctl({command})
                    : runProjectctl({command.substr(0, space), command.substr(space + 1)});
            EXPECT_EQ(end.status, 0);
            EXPECT_EQ(end.errors, "");
            printed.push_back(wordsOf(end.output));
            told.emplace_back();
        } else if (!told.empty()) {
            told.back() += line + '\n';
        }
    }
    ASSERT_EQ(told.size(), 1 + commands.size());
    for (std::size_t i = 0; i < told.size(); ++i) {
        EXPECT_EQ(printed[i], wordsOf(told[i]));
    }
}

TEST(ProjectctlCommandLine, PrintsHelpWithAllCommandsAndAnExampleOfEach) {
    const ProgramEnd help = runProjectctl({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.errors, "");
    for (const std::string& command : commands) {
        const std::size_t line = help.output.find("\n  " + command + " ");
        ASSERT_NE(line, std::string::npos) << command;
        EXPECT_EQ(help.output.find_first_not_of(' ', line + 3 + command.size()), line + 29);
        const ProgramEnd more = runProjectctl({command, "--help"});
        EXPECT_EQ(more.status, 0);
        EXPECT_EQ(more.errors, "");
        EXPECT_NE(more.output.find("\nExample:\n  projectctl " + command + " "), std::string::npos);
    }
}

}  // namespace
