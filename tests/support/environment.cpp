#include "tests/support/environment.h"

#include <cstdlib>

namespace {

void unsetCgiVariables() {
    for (const char* name : {"CONTENT_TYPE", "CONTENT_LENGTH", "QUERY_STRING", "REQUEST_METHOD"}) {
        ::unsetenv(name);
    }
}

}  // namespace

ScopedCgiEnvironment::ScopedCgiEnvironment(const Environment& variables) {
    unsetCgiVariables();
    for (const auto& [name, value] : variables) {
        ::setenv(name.c_str(), value.c_str(), 1);
    }
}

ScopedCgiEnvironment::~ScopedCgiEnvironment() {
    unsetCgiVariables();
}
