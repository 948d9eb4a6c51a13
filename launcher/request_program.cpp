#include "launcher/request_program.h"

#include <sys/auxv.h>

#include <bit>
#include <cstdio>
#include <string_view>

const char* chosenProgram(int argumentCount, char* const* arguments) {
    if (argumentCount <= 1) {
        return "sign.cgi";
    }
    const std::string_view argument = arguments[1];
    const std::string_view name = argument.substr(argument.rfind('/') + 1);
    for (const char* program : {"sign.cgi", "nph-sign.cgi"}) {
        if (argumentCount == 2 && name == program) {
            return program;
        }
    }
    return nullptr;
}

bool pathBeside(const char* name, ProgramPath& path) {
    const std::string_view own = std::bit_cast<const char*>(::getauxval(AT_EXECFN));
    const auto folderLength = static_cast<int>(own.rfind('/') + 1);
    const int length =
        std::snprintf(path.data(), path.size(), "%.*s%s", folderLength, own.data(), name);
    return static_cast<std::size_t>(length) < path.size();
}

RequestVariables requestVariables(char* const* environment) {
    RequestVariables kept{};
    std::size_t count = 0;
    for (const std::string_view name : {"CONTENT_TYPE=", "CONTENT_LENGTH="}) {
        char* const* variable = environment;
        while (*variable != nullptr && !std::string_view(*variable).starts_with(name)) {
            ++variable;
        }
        if (*variable != nullptr) {
            kept[count++] = *variable;
        }
    }
    return kept;
}
