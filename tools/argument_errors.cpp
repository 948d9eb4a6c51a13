#include "tools/argument_errors.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "tools/help_format.h"
#include "tools/nearest_name.h"

namespace {

std::string quoted(const std::string& word) {
    return "'" + word + "'";
}

/// The word, and the name that it may have been meant for.
std::string unknown(const std::string& what, const std::string& word,
                    const std::vector<std::string>& names) {
    const std::optional<std::string> nearest = nearestName(word, names);
    return "unknown " + what + " " + quoted(word) +
           (nearest.has_value() ? " (did you mean " + quoted(*nearest) + "?)" : "");
}

std::vector<std::string> commandsOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({})) {
        names.push_back(command->get_name());
    }
    return names;
}

std::vector<std::string> optionsOf(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        if (option->nonpositional()) {
            names.push_back(option->get_name());
        }
    }
    return names;
}

/// The command of this name; the program itself if there is none.
const CLI::App& commandNamed(const CLI::App& app, const std::string& name) {
    const std::vector<const CLI::App*> commands = app.get_subcommands({});
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const CLI::App* row) { return row->get_name() == name; });
    return command == commands.end() ? app : **command;
}

bool isOption(const std::string& word) {
    return word.size() > 1 && word.starts_with('-') && word != "--";
}

/// The parser's own message in other words where they say too little.
std::string reworded(std::string message) {
    // The parser leaves out the dashes of the name here.
    constexpr std::string_view ofFlag = " was given a disallowed flag override";
    if (message.ends_with(ofFlag)) {
        message.erase(message.size() - ofFlag.size());
        return "--" + message + " takes no value";
    }
    // "--option: 1 required TYPE missing"
    if (message.ends_with(" missing")) {
        return message.substr(0, message.find(':')) + " is given no value";
    }
    constexpr std::string_view excludes = " excludes ";
    if (const std::size_t place = message.find(excludes); place != std::string::npos) {
        return message.replace(place, excludes.size(), " and ") + " cannot be used together";
    }
    return message;
}

/// The usage is told where an operand is missing or too many, unless there are several.
std::string withUsage(const std::string& message, const CLI::App& command) {
    const std::optional<std::string> usage = onlyUsageOf(command);
    return usage.has_value() ? message + "; usage: " + *usage : message;
}

std::string wordsOf(const CLI::App& app, const CLI::App& command, const CLI::ParseError& error) {
    const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    const std::vector<std::string> surplus = app.remaining(true);
    if (!surplus.empty() &&
        (isMissing || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr)) {
        const auto option = std::find_if(surplus.begin(), surplus.end(), isOption);
        return option != surplus.end()
                   ? unknown("option", *option, optionsOf(command))
                   : withUsage("unexpected argument " + quoted(unmarked(surplus.front())), command);
    }
    const std::string message = reworded(error.what());
    return isMissing ? withUsage(message, command) : message;
}

/// No argument holds it.
constexpr char mark = '\0';

}  // namespace

std::string marked(const std::string& word) {
    return word == "++" || word.starts_with('[') ? mark + word : word;
}

std::string unmarked(const std::string& word) {
    return word.starts_with(mark) ? word.substr(1) : word;
}

void refuseRepetition(const CLI::App& command) {
    for (const CLI::Option* option : command.get_options()) {
        const bool takesAll = option->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
        if (option->count() > 1 && !takesAll) {
            throw CLI::ArgumentMismatch(option->get_name() + " is given " +
                                        std::to_string(option->count()) + " times");
        }
    }
}

void refuseEmptyValues(const std::vector<std::string>& arguments) {
    for (const std::string& word : arguments) {
        if (word == "--") {
            return;
        }
        if (word.starts_with("--") && word.find('=') == word.size() - 1) {
            throw CLI::ArgumentMismatch(word.substr(0, word.size() - 1) + " is given no value");
        }
    }
}

bool namesNoCommand(const CLI::App& app, const std::string& first) {
    return &commandNamed(app, first) == &app && !isOption(first);
}

std::string argumentError(const CLI::App& app, const std::string& first,
                          const CLI::ParseError& error) {
    if (namesNoCommand(app, first)) {
        return unknown("command", first, commandsOf(app));
    }
    const CLI::App& command = commandNamed(app, first);
    const std::string name = &command == &app ? "" : first + " ";
    return wordsOf(app, command, error) + "; see 'projectctl " + name + "--help'";
}
