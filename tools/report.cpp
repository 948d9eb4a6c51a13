#include "tools/report.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "tools/escaped_text.h"
#include "tools/exit_status.h"

std::string messageLine(const std::string& message) {
    return "projectctl: " + escaped(message) + "\n";
}

int reportFailure(const std::string& message) {
    reportRemark(message);
    return exitFailed;
}

void reportRemark(const std::string& message) {
    reportText(messageLine(message));
}

void reportText(const std::string& text) {
    std::fputs(text.c_str(), stderr);
}

void printLine(const std::string& line) {
    printText(escaped(line) + "\n");
}

void printText(const std::string& text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
}

std::string jsonText(const nlohmann::ordered_json& value) {
    return value.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace);
}

void printJson(const nlohmann::ordered_json& value) {
    printText(jsonText(value) + "\n");
}

bool isOutputTerminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

bool flushOutput() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return true;
    }
    reportRemark(std::string("standard output: ") + std::strerror(errno));
    return false;
}
