// Property: every request has exactly the response that a second front end works out, byte for byte
// and with its exit status; only a signature may be any that verifies, by libcrypto's word as well.
// Under a sound project the answer to a verification is true exactly when an oracle accepts the
// signature, to which libcrypto agrees; under what is no project it is false, and nothing is
// signed.
//
// Input: a line of a letter, "n" for the status line of a program that answers the client itself,
// and CONTENT_TYPE, a line for CONTENT_LENGTH (in both, "-" is unset; "=" is the true length), then
// the body. /dev/fd/60 is a sound project, 61 one without a scalar, 62 a project of no attributes,
// 63 a file of data and 64 an empty one.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "frontend/request_driver.h"
#include "frontend/response_writer.h"
#include "fuzz/memory_file.h"
#include "fuzz/property.h"
#include "fuzz/reference_request.h"
#include "fuzz/request_input.h"
#include "fuzz/signature_oracle.h"
#include "tests/support/expected_response.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr std::string_view serverStart = "Status: ";

/// The files that a request can name.
struct Surroundings {
    MemoryFile sound{60};
    MemoryFile withoutScalar{61};
    MemoryFile withoutAttributes{62};
    MemoryFile data{63};
    MemoryFile empty{64};
    Bytes dataBytes = {'f', 'i', 'l', 'e', ' ', 'd', 'a', 't', 'a', 0, 1};

    Surroundings() {
        AttributeValues attributes = keyAttributes(soundOracle().key());
        sound.write(projectBytes(attributes));
        attributes.erase(74);
        withoutScalar.write(projectBytes(attributes));
        withoutAttributes.write(projectBytes({}));
        data.write(dataBytes);
        empty.write({});
    }

    /// The bytes that a request wants signed or verified; none for what is no file that can be
    /// mapped.
    Bytes bytesOf(const RequestCourse& course) const {
        if (!course.record.signatureData.empty()) {
            return course.data;
        }
        const std::string path = terminatedText(course.record.signatureFile);
        if (data.isAt(path)) {
            return dataBytes;
        }
        std::error_code ignored;
        const bool mappable = std::filesystem::is_regular_file(path, ignored) &&
                              std::filesystem::file_size(path, ignored) != 0;
        return mappable ? fileBytes(path) : Bytes();
    }
};

struct Answer {
    std::string output;  ///< as for a server
    std::int32_t exitStatus = 0;
};

/// The bytes of a response, taken from a stream in the place of standard output: a run takes as
/// long as the program does.
std::string written(const Response& response) {
    static std::string collected;
    static std::FILE* const stream =
        ::fopencookie(nullptr, "wb",
                      {.read = nullptr,
                       .write = [](void*, const char* bytes, std::size_t count) -> ssize_t {
                           collected.append(bytes, count);
                           return static_cast<ssize_t>(count);
                       },
                       .seek = nullptr,
                       .close = nullptr});
    collected.clear();
    std::FILE* const standardOutput = std::exchange(stdout, stream);
    writeResponse(response.status, response.contentType, response.body);
    (void)std::fflush(stdout);
    stdout = standardOutput;
    return collected;
}

/// Runs the request; the first line is made that for a server once it was found to be right.
Answer answerTo(const RawRequest& request, bool nph) {
    nphOutput = nph;
    RequestRun run;
    const Response response = answerRequest(RawRequestSource(request), run);
    Answer answer{.output = written(response), .exitStatus = response.exitStatus};
    constexpr std::string_view clientStart = "HTTP/1.0 ";
    const std::string_view start = nph ? clientStart : serverStart;
    require(answer.output.starts_with(start), "the response has its first line");
    answer.output.replace(0, start.size(), serverStart);
    return answer;
}

/// The signature in a success with one.
std::string signatureIn(const Answer& answer, const RequestRecord& record) {
    std::string text = responseBody(answer.output);
    const std::string around = responseBody(referenceSuccess(record, "signature", "?"));
    const std::size_t before = around.find('?');
    const std::size_t behind = around.size() - before - 1;
    require(text.size() > before + behind, "there is a signature in the response");
    text = text.substr(before, text.size() - before - behind);
    require(answer.output == referenceSuccess(record, "signature", text),
            "a signature comes in a response of the known form");
    return text;
}

void checkSigning(const Answer& answer, const RequestCourse& course,
                  const Surroundings& surroundings) {
    static const std::string failure = expectedRefusal("Signature generation failed");
    const Bytes data = surroundings.bytesOf(course);
    if (!surroundings.sound.isAt(terminatedText(course.record.project)) || data.empty()) {
        require(answer.output == failure && answer.exitStatus == -1,
                "nothing is signed without a sound project and data");
        return;
    }
    require(answer.exitStatus == 0, "a signature is a success");
    const auto numbers = referenceSignature(signatureIn(answer, course.record));
    require(numbers.has_value(), "the text is one of a signature");
    require(judgeAccepts(soundOracle().key(), data,
                         {.r = numbers->r.toHexadecimal(), .s = numbers->s.toHexadecimal()}),
            "libcrypto accepts the signature");
}

void checkVerdict(const Answer& answer, const RequestCourse& course,
                  const Surroundings& surroundings) {
    const std::string project = terminatedText(course.record.project);
    const bool sound = surroundings.sound.isAt(project) || surroundings.withoutScalar.isAt(project);
    const bool valid = sound && soundOracle().accepts(surroundings.bytesOf(course),
                                                      terminatedText(course.record.signature));
    require(answer.exitStatus == 0 &&
                answer.output == referenceSuccess(course.record, "valid", valid ? "true" : "false"),
            "the verdict is the oracle's, in a response of the known form");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Surroundings surroundings;
    InputReader input(data, size);
    const std::string head = input.line();
    const bool nph = head.starts_with('n');
    const std::string type = head.substr(head.empty() ? 0 : 1);
    RawRequest request = announcedBody(input);
    request.contentType = variableFrom(type);
    if (announcesMuch(request)) {
        return 0;
    }
    if (announcesTheImpossible(request)) {
        bool raised = false;
        try {
            answerTo(request, nph);
        } catch (const std::length_error&) {
            raised = true;
        }
        require(raised, "an impossible length raises");
        return 0;
    }

    const Answer answer = answerTo(request, nph);
    const RequestCourse course = referenceCourse(request);
    if (!course.refusal.empty()) {
        require(answer.output == expectedRefusal(course.refusal) && answer.exitStatus == -1,
                "the refusal is the second front end's");
    } else if (course.record.mode == RequestMode::generateSignature) {
        checkSigning(answer, course, surroundings);
    } else {
        checkVerdict(answer, course, surroundings);
    }
    return 0;
}
