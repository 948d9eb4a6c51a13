#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "core/entry.h"
#include "tools/project_writer.h"

namespace {

constexpr int usageStatus = 2;

int createProject(const std::string& path) {
    coreEntry::coreStart();
    const std::optional<std::string> failure = writeProjectFile(newProject(), path);
    coreEntry::coreStop();
    if (failure.has_value()) {
        std::fprintf(stderr, "projectctl: %s\n", failure->c_str());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount == 3 && std::string_view(arguments[1]) == "create") {
        return createProject(arguments[2]);
    }
    std::fprintf(stderr, "usage: projectctl create FILE\n");
    return usageStatus;
}
