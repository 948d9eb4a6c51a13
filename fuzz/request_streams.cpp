#include "fuzz/request_streams.h"

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

constexpr std::size_t longestValue = 1000;

std::string_view inputRest;
std::string collected;

ssize_t giveInput(void* /*cookie*/, char* buffer, size_t size) {
    const std::size_t count = inputRest.copy(buffer, size);
    inputRest.remove_prefix(count);
    return static_cast<ssize_t>(count);
}

ssize_t collectOutput(void* /*cookie*/, const char* buffer, size_t size) {
    collected.append(buffer, size);
    return static_cast<ssize_t>(size);
}

std::FILE* inputStream() {
    static std::FILE* const stream = [] {
        std::FILE* made =
            ::fopencookie(nullptr, "rb",
                          {.read = giveInput, .write = nullptr, .seek = nullptr, .close = nullptr});
        (void)std::setvbuf(made, nullptr, _IONBF, 0);
        return made;
    }();
    return stream;
}

std::FILE* outputStream() {
    static std::FILE* const stream =
        ::fopencookie(nullptr, "wb",
                      {.read = nullptr, .write = collectOutput, .seek = nullptr, .close = nullptr});
    return stream;
}

/// A variable in a buffer that the environment refers to: setenv would keep a copy of each value.
class Variable {
public:
    explicit Variable(std::string_view name) : name_(name) {}

    void set(const std::optional<std::string>& value) {
        if (!value.has_value()) {
            ::unsetenv(name_.c_str());
            return;
        }
        const std::string assignment = name_ + '=' + *value;
        assignment.copy(assignment_.data(), assignment_.size() - 1);
        assignment_[std::min(assignment.size(), assignment_.size() - 1)] = '\0';
        ::putenv(assignment_.data());
    }

private:
    std::string name_;
    std::array<char, longestValue + 32> assignment_{};
};

}  // namespace

ScopedRequestStreams::ScopedRequestStreams(std::string_view input)
    : savedInput_(stdin), savedOutput_(stdout) {
    inputRest = input;
    collected.clear();
    stdin = inputStream();
    stdout = outputStream();
    std::clearerr(stdin);
}

ScopedRequestStreams::~ScopedRequestStreams() {
    (void)std::fflush(stdout);
    stdin = savedInput_;
    stdout = savedOutput_;
}

std::size_t ScopedRequestStreams::inputLeft() {
    return inputRest.size();
}

const std::string& ScopedRequestStreams::output() {
    (void)std::fflush(outputStream());
    return collected;
}

std::optional<std::string> environmentValue(const std::optional<std::string>& value) {
    if (!value.has_value()) {
        return std::nullopt;
    }
    return value->substr(0, std::min(value->find('\0'), longestValue));
}

void setContentType(const std::optional<std::string>& value) {
    static Variable variable("CONTENT_TYPE");
    variable.set(value);
}

void setContentLength(const std::optional<std::string>& value) {
    static Variable variable("CONTENT_LENGTH");
    variable.set(value);
}
