#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/standard_streams.h"

/// What a command of projectctl ended with and said.
struct CommandEnd {
    int status = -1;
    std::string output;
    std::string errors;

    bool operator==(const CommandEnd&) const = default;
};

/// For the messages of failed comparisons.
inline std::ostream& operator<<(std::ostream& stream, const CommandEnd& end) {
    return stream << "status " << end.status << ", output \"" << end.output << "\", errors \""
                  << end.errors << "\"";
}

/// Runs a command in this process; what it says is not shown.
template <typename Options>
CommandEnd runCommand(int (*command)(const Options&), const Options& options) {
    CommandEnd end;
    testing::internal::CaptureStderr();
    end.output = capturedOutput([&] { end.status = command(options); });
    end.errors = testing::internal::GetCapturedStderr();
    return end;
}
