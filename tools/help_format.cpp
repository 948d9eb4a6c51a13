#include "tools/help_format.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

constexpr const char* program = "projectctl";
constexpr const char* usageLabel = "Usage: ";

/// The parser's own format without its notes on what needs or excludes what, which the usage and
/// the descriptions tell.
class HelpFormat : public CLI::Formatter {
public:
    explicit HelpFormat(std::vector<std::string> usages) : usages_(std::move(usages)) {
        label("Positionals", "Arguments");
        constexpr std::size_t width = 28;
        column_width(width);
    }

    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override {
        const std::string groups =
            CLI::detail::find_and_replace(make_groups(app, mode), "\n\n\n", "\n\n");
        return make_description(app) + make_usage(app, std::move(name)) + make_positionals(app) +
               make_subcommands(app, mode) + groups + "\n" + make_footer(app);
    }

    std::string make_usage(const CLI::App* app, std::string name) const override {
        const std::vector<std::string> usages =
            usages_.empty() ? std::vector{defaultUsage(*app)} : usages_;
        std::string text = "\n";
        std::string start = usageLabel;
        for (const std::string& usage : usages) {
            text.append(start).append(name).append(" ").append(usage).append("\n");
            start.assign(start.size(), ' ');
        }
        return text;
    }

    std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
        return CLI::detail::find_and_replace(CLI::Formatter::make_option_name(option, isPositional),
                                             ",", ", ");
    }

    std::string make_option_opts(const CLI::Option* option) const override {
        const std::string type = option->get_type_name();
        return (type.empty() ? "" : " " + type) + (takesMany(*option) ? " ..." : "");
    }

    std::string make_option_usage(const CLI::Option* option) const override {
        const std::string name = option->get_name();
        return (option->get_required() ? name : "[" + name + "]") +
               (takesMany(*option) ? "..." : "");
    }

private:
    static bool takesMany(const CLI::Option& option) {
        return option.get_expected_max() == CLI::detail::expected_max_vector_size;
    }

    std::string defaultUsage(const CLI::App& app) const {
        std::string usage = "[OPTION]...";
        for (const CLI::Option* operand :
             app.get_options([](const CLI::Option* option) { return option->get_positional(); })) {
            usage += " " + make_option_usage(operand);
        }
        return usage;
    }

    std::vector<std::string> usages_;
};

}  // namespace

std::shared_ptr<CLI::FormatterBase> helpFormat(const std::vector<std::string>& usages) {
    return std::make_shared<HelpFormat>(usages);
}

std::string helpOf(const CLI::App& command) {
    // The parser's own `help` of the program is that of the command it has read.
    const std::string name = command.get_parent() == nullptr ? "" : " " + command.get_name();
    return command.get_formatter()->make_help(&command, program + name, CLI::AppFormatMode::Normal);
}

std::optional<std::string> onlyUsageOf(const CLI::App& command) {
    const std::string help = helpOf(command);
    const std::size_t start = help.find(usageLabel) + std::string(usageLabel).size();
    const std::size_t end = help.find('\n', start);
    return help[end + 1] == ' ' ? std::nullopt : std::optional(help.substr(start, end - start));
}
