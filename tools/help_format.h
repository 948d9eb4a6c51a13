#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class FormatterBase;
}  // namespace CLI

/// How the help of a command reads. The usage is made of its operands, or these lines stand for it,
/// each without "projectctl COMMAND " in front.
std::shared_ptr<CLI::FormatterBase> helpFormat(const std::vector<std::string>& usages = {});

/// The help of projectctl, or of one of its commands.
std::string helpOf(const CLI::App& command);

/// Its usage, as in "projectctl sign [OPTION]... PROJECT [FILE]..."; nothing if it has several.
std::optional<std::string> onlyUsageOf(const CLI::App& command);
