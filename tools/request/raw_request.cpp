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

/// Owner of a descriptor that the system has just given, if it has.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {
        if (number == -1) {
            giveUp();
        }
    }
    ~Descriptor() { ::close(number_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }

private:
    int number_;
};

/// While it lives, the environment and standard input are those of the request.
class ScopedRequest {
public:
    explicit ScopedRequest(const RawRequest& request)
        : savedLength_(variable(lengthVariable)),
          savedInput_(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)) {
        const Descriptor file(::memfd_create("request", MFD_CLOEXEC));
        if (!writeAll(file.number(), request.body)) {
            giveUp();
        }
        ::lseek(file.number(), 0, SEEK_SET);
        ::dup2(file.number(), STDIN_FILENO);
        std::clearerr(stdin);
        setVariable(lengthVariable, request.contentLength);
    }
    ~ScopedRequest() {
        ::dup2(savedInput_.number(), STDIN_FILENO);
        std::clearerr(stdin);
        setVariable(lengthVariable, savedLength_);
    }
    ScopedRequest(const ScopedRequest&) = delete;
    ScopedRequest& operator=(const ScopedRequest&) = delete;

private:
    std::optional<std::string> savedLength_;
    Descriptor savedInput_;
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
