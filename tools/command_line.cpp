#include "tools/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <iostream>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "tools/argument_errors.h"
#include "tools/commands/check_command.h"
#include "tools/commands/convert_command.h"
#include "tools/commands/create_command.h"
#include "tools/commands/digest_command.h"
#include "tools/commands/explain_command.h"
#include "tools/commands/export_command.h"
#include "tools/commands/show_command.h"
#include "tools/commands/sign_command.h"
#include "tools/commands/strip_command.h"
#include "tools/commands/verify_command.h"
#include "tools/exit_status.h"
#include "tools/help_format.h"
#include "tools/report.h"

namespace {

/// Takes the mark off a word that `CommandLine::parse` marked.
CLI::Validator unmarking() {
    const auto unmark = [](std::string& word) -> std::string {
        word = unmarked(word);
        return {};
    };
    return {unmark, ""};
}

/// Refuses every word but these, and makes the enumerator of its position of each.
CLI::Validator oneOf(const std::vector<std::string>& words) {
    const auto replace = [words](std::string& word) -> std::string {
        const auto found = std::find(words.begin(), words.end(), word);
        if (found == words.end()) {
            return "'" + word + "' is not one of " + CLI::detail::join(words, ", ");
        }
        word = std::to_string(found - words.begin());
        return {};
    };
    return {replace, ""};
}

constexpr const char* version = "projectctl " SIGN_VERSION;

/// The parser's commands, each of which sets `run` to what it does.
class CommandLine {
public:
    CommandLine() {
        app_.require_subcommand(0, 1);
        app_.set_version_flag("--version", version, "Print the version and exit");
        app_.set_help_flag("-h,--help", "Print this help and exit");
        app_.formatter(helpFormat({"COMMAND [OPTION]... [ARGUMENT]...", "help [COMMAND]"}));
        app_.footer("'projectctl help COMMAND' explains a command, with an example.");
        addCreate();
        addShow();
        addCheck();
        addStrip();
        addSign();
        addVerify();
        addExplain();
        addExport();
        addConvert();
        addDigest();
    }

    int run(int argumentCount, const char* const* arguments) {
        if (argumentCount < 2) {
            reportText(helpOf(app_));
            return exitFailed;
        }
        std::vector<std::string> words(arguments + 1, arguments + argumentCount);
        if (words.front() == "help") {
            words.erase(words.begin());
            // "help help" gives the list.
            std::erase(words, "help");
            words.emplace_back("--help");
        }
        try {
            parse(words);
        } catch (const CLI::Success& success) {
            app_.exit(success);
            std::cout.flush();
            return flushOutput() ? exitDone : exitFailed;
        } catch (const CLI::ParseError& error) {
            const int status = reportFailure(argumentError(app_, words.front(), error));
            if (namesNoCommand(app_, words.front())) {
                reportText("\n" + helpOf(app_));
            }
            return status;
        }
        try {
            const int status = command_();
            return flushOutput() ? status : exitFailed;
        } catch (const std::bad_alloc&) {
            return reportFailure("there is not enough memory");
        }
    }

private:
    void parse(std::vector<std::string> words) {
        // The parser prints the list for any unknown command that asks for help.
        if (namesNoCommand(app_, words.front())) {
            throw CLI::ExtrasError(words);
        }
        refuseEmptyValues(words);
        std::transform(words.begin(), words.end(), words.begin(), marked);
        // It takes the words from the back.
        std::reverse(words.begin(), words.end());
        app_.parse(words);
        if (command_ == nullptr) {
            throw CLI::RequiredError("a command");
        }
    }

    CLI::App* addCommand(const std::string& name, const std::string& description,
                         const std::string& example) {
        CLI::App* command = app_.add_subcommand(name, description)->group("Commands");
        command->formatter(helpFormat());
        command->footer("Example:\n  projectctl " + example);
        return command;
    }

    static CLI::Option* addFlag(CLI::App* command, const std::string& name, bool& value,
                                const std::string& description) {
        return command->add_flag(name, value, description)->disable_flag_override();
    }

    template <typename Value>
    static CLI::Option* addOption(CLI::App* command, const std::string& name, Value& value,
                                  const std::string& valueName, const std::string& description) {
        return command->add_option(name, value, description)
            ->transform(unmarking())
            ->type_name(valueName)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    }

    /// An option whose value is one of these words, and stands for the enumerator of its position.
    template <typename Value>
    static CLI::Option* addChoice(CLI::App* command, const std::string& name, Value& value,
                                  const std::vector<std::string>& words,
                                  const std::string& description) {
        // What transforms comes in front of what does already.
        return addOption(command, name, value, CLI::detail::join(words, "|"), description)
            ->transform(oneOf(words))
            ->transform(unmarking());
    }

    /// An option or operand that names a file: its value must not be empty.
    template <typename Value>
    static CLI::Option* addPath(CLI::App* command, const std::string& name, Value& value,
                                const std::string& valueName, const std::string& description) {
        const auto refusal = [](const std::string& path) -> std::string {
            return path.empty() ? "the path is empty" : "";
        };
        return addOption(command, name, value, valueName, description)->check(refusal);
    }

    static void addJson(CLI::App* command, bool& json) {
        addFlag(command, "--json", json, "Print one line of JSON");
    }

    template <typename Options>
    void onCommand(CLI::App* command, Options& options, int (*function)(const Options&)) {
        command->callback([this, command, &options, function] {
            refuseRepetition(*command);
            command_ = [&options, function] { return function(options); };
        });
    }

    void addCreate() {
        CLI::App* command =
            addCommand("create", "Make a project with a fresh key", "create my.project");
        addPath(command, "FILE", create_.file, "", "The new project file")->required();
        addChoice(command, "--base", create_.base, {"random", "standard"},
                  "The base point: random, or the published one of the curve");
        addPath(command, "--from-scalar", create_.scalarFile, "HEXFILE",
                "Read the private scalar in hexadecimal from a file (-: standard input)");
        onCommand(command, create_, createCommand);
    }

    void addShow() {
        CLI::App* command =
            addCommand("show", "Show the attributes of a project", "show my.project");
        addPath(command, "FILE", show_.file, "", "The project file")->required();
        addFlag(command, "--secret", show_.secret, "Show the private scalar too");
        addJson(command, show_.json);
        onCommand(command, show_, showCommand);
    }

    void addCheck() {
        CLI::App* command = addCommand("check", "Check a project for errors", "check my.project");
        addPath(command, "FILE", check_.file, "", "The project file")->required();
        addJson(command, check_.json);
        onCommand(command, check_, checkCommand);
    }

    void addStrip() {
        CLI::App* command = addCommand("strip", "Copy a project without its private scalar",
                                       "strip my.project public.project");
        addPath(command, "FILE", strip_.file, "", "The project file")->required();
        addPath(command, "OUT", strip_.output, "", "The new project file, which only verifies")
            ->required();
        onCommand(command, strip_, stripCommand);
    }

    void addSign() {
        CLI::App* command =
            addCommand("sign", "Sign files or standard input", "sign my.project letter.txt");
        addPath(command, "PROJECT", sign_.project, "", "The project file")->required();
        addPath(command, "FILE", sign_.files, "",
                "The files to sign (-: standard input); several give a list")
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
        addPath(command, "-o,--output", sign_.output, "FILE",
                "Write to a new file instead (-: standard output)");
        addJson(command, sign_.json);
        onCommand(command, sign_, signCommand);
    }

    void addVerify();
    /// Where the signature is in a file, the only operand behind the project names what was signed.
    void takeFileForSignature(const CLI::Option& file);
    void addExplain();
    void addExport() {
        CLI::App* command =
            addCommand("export", "Print the public key as PEM", "export my.project > public.pem");
        addPath(command, "FILE", export_.file, "", "The project file")->required();
        addFlag(command, "--private", export_.privateKey, "Print the private key instead");
        addJson(command, export_.json);
        onCommand(command, export_, exportCommand);
    }

    void addConvert();
    void addDigest() {
        CLI::App* command = addCommand("digest", "Write the digest of a file for other software",
                                       "digest letter.txt > digest.bin");
        addPath(command, "FILE", digest_.file, "", "The file to digest (-: standard input)");
        addJson(command, digest_.json);
        onCommand(command, digest_, digestCommand);
    }

    CLI::App app_{"Makes, checks and uses the projects that sign.cgi signs and verifies with.",
                  "projectctl"};
    CreateOptions create_;
    ShowOptions show_;
    CheckOptions check_;
    StripOptions strip_;
    SignOptions sign_;
    VerifyOptions verify_;
    ExplainOptions explain_;
    ExportOptions export_;
    ConvertOptions convert_;
    DigestOptions digest_;
    std::function<int()> command_;
};

void CommandLine::addVerify() {
    CLI::App* command = addCommand("verify", "Verify a signature of a file, or a list of them",
                                   "verify public.project \"$signature\" letter.txt");
    command->formatter(helpFormat({"[OPTION]... PROJECT SIGNATURE [FILE]",
                                   "[OPTION]... PROJECT --signature-file FILE [FILE]",
                                   "[OPTION]... PROJECT --check LIST"}));
    addPath(command, "PROJECT", verify_.project, "", "The project file")->required();
    CLI::Option* signature = addOption(command, "SIGNATURE", verify_.signature, "",
                                       "The text of the signature; not with --signature-file");
    CLI::Option* file =
        addPath(command, "FILE", verify_.file, "", "The file that was signed (-: standard input)");
    CLI::Option* signatureFile = addPath(command, "--signature-file", verify_.signatureFile, "FILE",
                                         "Read the signature from a file (-: standard input)");
    CLI::Option* list =
        addPath(command, "--check", verify_.list, "LIST",
                "Verify a list that 'sign' printed for several files (-: standard input)");
    for (CLI::Option* ofList :
         {addFlag(command, "--ignore-missing", verify_.ignoreMissing,
                  "Ignore files of the list that are missing"),
          addFlag(command, "--quiet", verify_.quiet, "Print no line for a file that is OK"),
          addFlag(command, "--status", verify_.status,
                  "Print nothing; the exit status tells the result")}) {
        ofList->needs(list);
    }
    list->excludes(signature)->excludes(signatureFile);
    addJson(command, verify_.json);
    command->callback([=, this] {
        refuseRepetition(*command);
        if (signature->empty() && signatureFile->empty() && list->empty()) {
            throw CLI::RequiredError("SIGNATURE");
        }
        if (!signatureFile->empty() && !signature->empty()) {
            takeFileForSignature(*file);
        }
        if (!signatureFile->empty() && *verify_.signatureFile == "-" && verify_.file == "-") {
            throw CLI::ArgumentMismatch(
                "standard input cannot hold both the signature and what was signed");
        }
        command_ = [this] { return verifyCommand(verify_); };
    });
}

void CommandLine::takeFileForSignature(const CLI::Option& file) {
    if (!file.empty()) {
        throw CLI::ExcludesError("SIGNATURE", "--signature-file");
    }
    if (verify_.signature.empty()) {
        throw CLI::ArgumentMismatch("FILE: the path is empty");
    }
    verify_.file = std::exchange(verify_.signature, {});
}

void CommandLine::addExplain() {
    CLI::App* command =
        addCommand("explain", "Explain how the program answers a request",
                   "explain --project my.project --file letter.txt --signature \"$signature\"");
    command->formatter(
        helpFormat({"--body FILE [OPTION]...", "--project FILE --data TEXT|--file FILE [OPTION]...",
                    "--rules [--json]"}));
    CLI::Option* body =
        addPath(command, "--body", explain_.body, "FILE", "The request's body (-: standard input)");
    CLI::Option* type = addOption(command, "--content-type", explain_.contentType, "TYPE",
                                  "CONTENT_TYPE (default: not set)");
    CLI::Option* length = addOption(command, "--content-length", explain_.contentLength, "TEXT",
                                    "CONTENT_LENGTH (default: the size of the body)");
    CLI::Option* noLength = addFlag(command, "--no-content-length", explain_.noContentLength,
                                    "CONTENT_LENGTH is not set");
    for (CLI::Option* option : {body, type, length, noLength}) {
        option->group("A raw request");
    }
    CLI::Option* project =
        addOption(command, "--project", explain_.project, "FILE", "The project file");
    CLI::Option* data = addOption(command, "--data", explain_.data, "TEXT", "The data");
    CLI::Option* encoding = addOption(command, "--data-encoding", explain_.dataEncoding, "WORD",
                                      "The encoding of the data: plain, base64, or another word");
    CLI::Option* file = addOption(command, "--file", explain_.file, "FILE", "The file");
    CLI::Option* signature = addOption(command, "--signature", explain_.signature, "TEXT",
                                       "The signature; without one, the request signs");
    for (CLI::Option* option : {project, data, encoding, file, signature}) {
        option->group("A request in options");
    }
    type->needs(body);
    length->needs(body)->excludes(noLength);
    noLength->needs(body);
    body->excludes(project);
    data->needs(project)->excludes(file);
    encoding->needs(project);
    file->needs(project);
    signature->needs(project);
    CLI::Option* rules = addFlag(command, "--rules", explain_.rules, "List all rules instead");
    rules->excludes(body)->excludes(project);
    addJson(command, explain_.json);
    command->callback([=, this] {
        refuseRepetition(*command);
        if (body->empty() && project->empty() && rules->empty()) {
            throw CLI::RequiredError("--body, --project or --rules");
        }
        if (!project->empty() && data->empty() && file->empty()) {
            throw CLI::RequiredError("--data or --file");
        }
        command_ = [this] { return explainCommand(explain_); };
    });
}

void CommandLine::addConvert() {
    CLI::App* command = addCommand("convert", "Convert a signature for other software",
                                   "convert \"$signature\" --to der > signature.der");
    command->formatter(
        helpFormat({"[--from FORM] --to FORM SIGNATURE", "[--from FORM] --json SIGNATURE"}));
    addOption(command, "SIGNATURE", convert_.signature, "",
              "The signature; in DER, the file that holds it (-: standard input)")
        ->required();
    const std::vector<std::string> forms = {"text", "der", "hex"};
    addChoice(command, "--from", convert_.from, forms, "The form of the signature (default: text)");
    CLI::Option* to = addChoice(command, "--to", convert_.to, forms, "The form to write");
    addJson(command, convert_.json);
    command->callback([=, this] {
        refuseRepetition(*command);
        if (to->empty() && !convert_.json) {
            throw CLI::RequiredError("--to or --json");
        }
        if (!to->empty() && convert_.json) {
            throw CLI::ExcludesError("--to", "--json");
        }
        command_ = [this] { return convertCommand(convert_); };
    });
}

}  // namespace

int runCommandLine(int argumentCount, const char* const* arguments) {
    return CommandLine().run(argumentCount, arguments);
}
