#include "tools/request/raw_request.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "tools/counted_text.h"
#include "tools/files/write_all.h"
#include "tools/request/quoted_text.h"

namespace {

constexpr const char* lengthVariable = "CONTENT_LENGTH";

void setVariable(const char* name, const std::optional<std::string>& value) {
    if (value.has_value()) {
        ::setenv(name, value->c_str(), 1);
    } else {
        ::unsetenv(name);
    }
}

std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

[[noreturn]] void giveUp() {
    throw std::system_error(errno, std::generic_category(), "a file for the request's body");
}

/// A file without a name that holds these bytes, at its start.
int fileOf(std::string_view bytes) {
    const int descriptor = ::memfd_create("request", MFD_CLOEXEC);
    if (descriptor == -1) {
        giveUp();
    }
    if (!writeAll(descriptor, bytes)) {
        const int reason = errno;
        ::close(descriptor);
        errno = reason;
        giveUp();
    }
    ::lseek(descriptor, 0, SEEK_SET);
    return descriptor;
}

/// While it lives, the environment and standard input are those of the request.
class ScopedRequest {
public:
    explicit ScopedRequest(const RawRequest& request)
        : savedLength_(variable(lengthVariable)),
          savedInput_(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)) {
        try {
            // Without a standard input so far, the file may take its number.
            const int file = fileOf(request.body);
            if (file != STDIN_FILENO) {
                ::dup2(file, STDIN_FILENO);
                ::close(file);
            }
        } catch (const std::system_error&) {
            restoreInput();
            throw;
        }
        std::clearerr(stdin);
        setVariable(lengthVariable, request.contentLength);
    }
    ~ScopedRequest() {
        restoreInput();
        std::clearerr(stdin);
        setVariable(lengthVariable, savedLength_);
    }
    ScopedRequest(const ScopedRequest&) = delete;
    ScopedRequest& operator=(const ScopedRequest&) = delete;

private:
    void restoreInput() const {
        if (savedInput_ == -1) {
            ::close(STDIN_FILENO);
        } else {
            ::dup2(savedInput_, STDIN_FILENO);
            ::close(savedInput_);
        }
    }

    std::optional<std::string> savedLength_;
    int savedInput_;
};

}  // namespace

InputOutcome readAsProgram(const RawRequest& request, const std::function<bool()>& reader) {
    const ScopedRequest scope(request);
    try {
        return reader() ? InputOutcome::accepted : InputOutcome::refused;
    } catch (const std::length_error&) {
        return InputOutcome::tooLong;
    } catch (const std::bad_alloc&) {
        return InputOutcome::noMemory;
    }
}

Explanation explainSilence(const RawRequest& request, InputOutcome outcome,
                           const std::string& kind) {
    const std::string announced =
        "CONTENT_LENGTH is " + quotation(request.contentLength.value_or(""));
    if (outcome == InputOutcome::tooLong) {
        return silenceBy({kind + ".length-impossible",
                          announced + ", which counts as 2^63 - 1 bytes or more: the "
                                      "program ends by SIGABRT without a response"});
    }
    return silenceBy({kind + ".length-memory", announced +
                                                   ", and there is no memory for such a body: the "
                                                   "program ends by SIGABRT without a response"});
}

std::vector<std::string> lengthRemarks(const RawRequest& request, std::uint64_t length) {
    std::vector<std::string> remarks;
    if (request.contentLength != std::to_string(length)) {
        remarks.push_back("CONTENT_LENGTH is " + quotation(request.contentLength.value_or("")) +
                          " and counts as " + std::to_string(length));
    }
    if (length < request.body.size()) {
        remarks.push_back("CONTENT_LENGTH announces " + std::to_string(length) + " of the body's " +
                          counted(request.body.size(), "byte") + ": the rest is not read");
    }
    return remarks;
}
