#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

// What a request finds around it, without a system call: a run takes as long as the program does.

/// While it lives, standard input gives these bytes, which must live as long, and standard output
/// collects what is written.
class ScopedRequestStreams {
public:
    explicit ScopedRequestStreams(std::string_view input);
    ~ScopedRequestStreams();
    ScopedRequestStreams(const ScopedRequestStreams&) = delete;
    ScopedRequestStreams& operator=(const ScopedRequestStreams&) = delete;

    /// How many bytes of the input nobody has taken.
    static std::size_t inputLeft();

    /// All that was written so far.
    static const std::string& output();

private:
    std::FILE* savedInput_;
    std::FILE* savedOutput_;
};

/// The value, as far as the environment can hold it: up to its first zero byte, and 1000 bytes at
/// the most.
std::optional<std::string> environmentValue(const std::optional<std::string>& value);

// Set these variables, or unset them; the values are such as `environmentValue` gives.

void setContentType(const std::optional<std::string>& value);
void setContentLength(const std::optional<std::string>& value);
