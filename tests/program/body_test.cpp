// How the program reads its input: as much as is announced, and nothing else.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "tests/program/sign_program.h"
#include "tests/support/messages.h"
#include "tests/support/standard_streams.h"

namespace {

using namespace std::string_literals;
using Input = ProgramCall::Input;

/// A body whose refusal shows that all of it was read, and its message.
struct Sample {
    InputKind kind;
    std::string body;
};

const std::vector<Sample> samples{
    {InputKind::form, "other=1&sig_create=true"},
    {InputKind::json, R"({"other":1,"mode":"generateSignature"})"},
};

ProgramEnd requestWithLength(InputKind kind, const std::string& length, const std::string& body) {
    ProgramCall call = requestCall(kind, body);
    call.environment["CONTENT_LENGTH"] = length;
    return runProgram(call);
}

/// Bytes of the machine's memory.
std::uint64_t physicalMemory() {
    return static_cast<std::uint64_t>(::sysconf(_SC_PHYS_PAGES)) *
           static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace

TEST(ProgramBody, IsWaitedForWhenItArrivesInPieces) {
    for (const Sample& sample : samples) {
        ProgramCall call = requestCall(sample.kind, sample.body);
        const std::size_t third = sample.body.size() / 3;
        call.pieces = {sample.body.substr(0, 1), sample.body.substr(1, third),
                       sample.body.substr(1 + third)};
        EXPECT_TRUE(isRefused(runProgram(call), projectRequired));
    }
}

TEST(ProgramBody, EndsAtItsLengthOnAPipeThatStaysOpen) {
    for (const Sample& sample : samples) {
        ProgramCall call = requestCall(sample.kind, sample.body);
        call.input = Input::held;
        EXPECT_TRUE(isRefused(runProgram(call), projectRequired));
        call.pieces = {sample.body.substr(0, 5), sample.body.substr(5)};
        EXPECT_TRUE(isRefused(runProgram(call), projectRequired));
    }
}

TEST(ProgramBody, LeavesTheBytesBehindItInAPipe) {
    for (const Sample& sample : samples) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        const std::string rest = "the next request";
        const std::string all = sample.body + rest;
        ASSERT_EQ(::write(ends[1], all.data(), all.size()), static_cast<ssize_t>(all.size()));
        ::close(ends[1]);

        ProgramCall call = requestCall(sample.kind, sample.body);
        call.input = Input::given;
        call.inputDescriptor = ends[0];
        call.pieces.clear();
        EXPECT_TRUE(isRefused(runProgram(call), projectRequired));
        std::array<char, 100> left{};
        const ssize_t count = ::read(ends[0], left.data(), left.size());
        ::close(ends[0]);
        ASSERT_EQ(count, static_cast<ssize_t>(rest.size()));
        EXPECT_EQ(std::string(left.data(), rest.size()), rest);
    }
}

TEST(ProgramBody, LeavesTheBytesBehindItInAFile) {
    for (const Sample& sample : samples) {
        const int file = anonymousFile(sample.body + std::string(10000, 'x'));
        ProgramCall call = requestCall(sample.kind, sample.body);
        call.input = Input::given;
        call.inputDescriptor = file;
        call.pieces.clear();
        EXPECT_TRUE(isRefused(runProgram(call), projectRequired));
        EXPECT_EQ(::lseek(file, 0, SEEK_CUR), static_cast<off_t>(sample.body.size()));
        ::close(file);
    }
}

TEST(ProgramBody, IsCutAtTheAnnouncedLength) {
    EXPECT_TRUE(isRefused(requestWithLength(InputKind::form, "5", "sig_create=true"), modeMissing));
    EXPECT_TRUE(isRefused(requestWithLength(InputKind::form, "15", "sig_create=true&project=p"),
                          projectRequired));
    EXPECT_TRUE(isRefused(requestWithLength(InputKind::json, "5", samples[1].body), noJson));
    EXPECT_TRUE(isRefused(requestWithLength(InputKind::json, "2", "{}garbage"), modeMissing));
}

TEST(ProgramBody, MayBeShorterThanAnnouncedInAFormAlone) {
    for (const char* length : {"40", "1000", "1000000"}) {
        EXPECT_TRUE(isRefused(requestWithLength(InputKind::form, length, samples[0].body),
                              projectRequired));
        EXPECT_TRUE(isRefused(requestWithLength(InputKind::json, length, samples[1].body), noJson));
    }
}

TEST(ProgramBody, TakesMemoryAsItArrivesHoweverMuchIsAnnounced) {
    const std::uint64_t announced = std::min<std::uint64_t>(10'000'000'000, physicalMemory() / 2);
    ProgramCall call = requestCall(InputKind::form, samples[0].body);
    call.environment["CONTENT_LENGTH"] = std::to_string(announced);
    const ProgramEnd end = runProgram(call);
    EXPECT_TRUE(isRefused(end, projectRequired));
    EXPECT_LT(end.peakMemory, announced / 4);
}

TEST(ProgramBody, IsAbsentWithoutAUsableLength) {
    for (const char* length : {"", "0", "abc", "-", "-0", "-1", "18446744073709551615",
                               "18446744073709551616", "99999999999999999999999"}) {
        EXPECT_TRUE(isRefused(requestWithLength(InputKind::form, length, samples[0].body), noForm))
            << length;
    }
    for (const char* length :
         {"", "0", "abc", "-", "-0", "38x", " 38", "38 ", "18446744073709551616"}) {
        EXPECT_TRUE(isRefused(requestWithLength(InputKind::json, length, samples[1].body), noJson))
            << length;
    }
    for (const Sample& sample : samples) {
        ProgramCall call = requestCall(sample.kind, sample.body);
        call.environment.erase("CONTENT_LENGTH");
        EXPECT_TRUE(isRefused(runProgram(call), sample.kind == InputKind::form ? noForm : noJson));
    }
}

TEST(ProgramBody, TakesTheNumberAtTheStartOfAFormsLength) {
    for (const char* length : {"23x", " 23", "+23", "\t23 bytes", "00023"}) {
        EXPECT_TRUE(
            isRefused(requestWithLength(InputKind::form, length, samples[0].body), projectRequired))
            << length;
    }
}

TEST(ProgramBody, TakesAJsonLengthWithASignOrOneThatWrapsAround) {
    ASSERT_EQ(samples[1].body.size(), 38U);
    for (const char* length : {"38", "+38", "0038", "18446744073709551654"}) {
        EXPECT_TRUE(
            isRefused(requestWithLength(InputKind::json, length, samples[1].body), projectRequired))
            << length;
    }
}

TEST(ProgramBody, IsAbsentWithoutStandardInput) {
    for (const Sample& sample : samples) {
        ProgramCall call = requestCall(sample.kind, sample.body);
        call.input = Input::closed;
        call.pieces.clear();
        EXPECT_TRUE(isRefused(runProgram(call), sample.kind == InputKind::form ? noForm : noJson));
    }
}

TEST(ProgramBody, IsAbsentWhenStandardInputIsEmpty) {
    EXPECT_TRUE(isRefused(requestWithLength(InputKind::form, "23", ""), noForm));
    EXPECT_TRUE(isRefused(requestWithLength(InputKind::json, "38", ""), noJson));
}

TEST(ProgramBody, EndsAtAZeroByteInAForm) {
    EXPECT_TRUE(
        isRefused(request(InputKind::form, "sig_create=true\0&project=p"s), projectRequired));
    EXPECT_TRUE(isRefused(request(InputKind::form, "\0sig_create=true"s), modeMissing));
}

TEST(ProgramBody, MayHoldNoZeroByteInJson) {
    for (const std::string& body :
         {"{}\0"s, "\0{}"s, "{\0}"s, "{}\0{}"s, "{}\0\0\0\0"s, samples[1].body + '\0'}) {
        EXPECT_TRUE(isRefused(request(InputKind::json, body), noJson));
    }
}

TEST(ProgramBody, IsTheOnlySourceOfParameters) {
    for (const Sample& sample : samples) {
        ProgramCall call = requestCall(sample.kind, sample.body);
        call.environment["QUERY_STRING"] = "project=p&sig_data=d";
        for (const char* method : {"POST", "GET", "PUT", ""}) {
            call.environment["REQUEST_METHOD"] = method;
            EXPECT_TRUE(isRefused(runProgram(call), projectRequired)) << method;
        }
    }
    ProgramCall call = requestCall(InputKind::form, "");
    call.environment["QUERY_STRING"] = "sig_create=true";
    call.environment["REQUEST_METHOD"] = "GET";
    EXPECT_TRUE(isRefused(runProgram(call), noForm));
}

TEST(ProgramBody, IsAFormUnlessItsTypeIsExactlyThatOfJson) {
    ProgramCall call = requestCall(InputKind::form, samples[0].body);
    for (const char* type : {"application/json; charset=utf-8", "APPLICATION/JSON", "text/plain",
                             "multipart/form-data", ""}) {
        call.environment["CONTENT_TYPE"] = type;
        EXPECT_TRUE(isRefused(runProgram(call), projectRequired)) << type;
    }
    call.environment.erase("CONTENT_TYPE");
    EXPECT_TRUE(isRefused(runProgram(call), projectRequired));
    call = requestCall(InputKind::json, samples[1].body);
    call.environment["CONTENT_TYPE"] = "application/json; charset=utf-8";
    EXPECT_TRUE(isRefused(runProgram(call), modeMissing));
}

TEST(ProgramBody, IsNotNeededForAnAnswerInAnEmptyEnvironment) {
    ProgramCall call = requestCall(InputKind::form, "");
    call.environment.clear();
    EXPECT_TRUE(isRefused(runProgram(call), noForm));
}
