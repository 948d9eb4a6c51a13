#include "tools/report.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "tools/exit_status.h"

int reportFailure(const std::string& message) {
    reportRemark(message);
    return exitFailed;
}

void reportRemark(const std::string& message) {
    std::fprintf(stderr, "projectctl: %s\n", message.c_str());
}

void printText(const std::string& text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stdout));
}

void printJson(const nlohmann::ordered_json& value) {
    using nlohmann::ordered_json;
    printText(value.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

bool flushOutput() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return true;
    }
    reportRemark(std::string("standard output: ") + std::strerror(errno));
    return false;
}
