// The memory of a JSON request, which needs a program without sanitizers.

#include <sys/syscall.h>

#include <fstream>

#include "tests/faults/call_tracer.h"
#include "tests/program/sign_program.h"

namespace {

constexpr std::size_t mebibyte = 1 << 20;

/// The most that the process's own image has had in memory, in bytes.
std::uint64_t peakOf(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string word;
    std::uint64_t kibibytes = 0;
    while (status >> word && word != "VmHWM:") {
    }
    status >> kibibytes;
    return 1024 * kibibytes;
}

struct MeasuredEnd {
    ProgramEnd end;
    std::uint64_t peak = 0;
};

/// The usage that a process leaves behind counts its memory from before the program's start too,
/// that of this test; so it is measured when the program is about to end.
MeasuredEnd measuredRun(ProgramCall call) {
    MeasuredEnd measured;
    CallTracer tracer([&](pid_t process, const SystemCall& call) {
        if (call.number == SYS_exit_group) {
            measured.peak = peakOf(process);
        }
        return CallChange{};
    });
    call.tracer = std::ref(tracer);
    measured.end = runProgram(call);
    return measured;
}

MeasuredEnd measuredRequest(const std::string& body) {
    return measuredRun(requestCall(InputKind::json, body));
}

/// A body: its start, a middle repeated as often as there is room, and its end.
struct BodyShape {
    const char* name;
    std::string start;
    std::string middle;
    std::string end;
    bool isTaken = true;

    std::string text(std::size_t size) const {
        std::string body = start;
        body.reserve(size);
        while (body.size() + middle.size() + end.size() <= size) {
            body += middle;
        }
        return body + end;
    }
};

// The answer tells whether a body was taken: it is then refused for its missing mode.
const std::vector<BodyShape> shapes{
    {"one string as data", R"({"signature":{"data":")", "x", "\"}}"},
    {"one string elsewhere", R"({"x":")", "x", "\"}"},
    {"one name", R"({")", "x", R"(":0})"},
    {"escapes", R"({"signature":{"data":")", "\\n", "\"}}"},
    {"escapes of three bytes", R"({"signature":{"data":")", "\\u20ac", "\"}}"},
    {"data repeated", R"({"signature":{"data":"d")", R"(,"data":"e")", "}}"},
    {"members", R"({"x":0)", R"(,"x":0)", "}"},
    {"numbers", R"({"x":[0)", ",0", "]}"},
    {"one number", R"({"x":0.)", "1", "}"},
    {"empty arrays", R"({"x":[0)", ",[]", "]}"},
    {"white space", R"({"x":)", "\n", "0}"},
    {"arrays never closed", R"({"x":)", "[", "", false},
    {"objects never closed", R"({"x":)", R"({"a":)", "0", false},
    {"a bad word behind arrays", R"({"x":)", "[", "x", false},
    {"a bad word behind white space", R"({"x":)", "\n", "x", false},
    {"a string never closed", R"({"x":")", "x", "", false},
    {"a bad byte behind a string", R"({"x":")", "x", "\xFF\"}", false},
    {"a number out of range", R"({"x":)", "9", "}", false},
};

std::string nested(const std::string& opening, const std::string& closing, std::size_t size) {
    std::string body = R"({"x":)";
    const std::size_t depth = (size - body.size() - 2) / (opening.size() + closing.size());
    for (std::size_t i = 0; i < depth; ++i) {
        body += opening;
    }
    body += '0';
    for (std::size_t i = 0; i < depth; ++i) {
        body += closing;
    }
    return body + '}';
}

/// The program takes four times the body at most beside what it takes for a small one; the kernel
/// counts pages some late.
void expectBounded(const std::string& body, bool isTaken) {
    static const std::uint64_t least = measuredRequest("{}").peak;
    constexpr std::uint64_t uncounted = mebibyte / 2;
    ASSERT_GT(least, 0U);
    const MeasuredEnd measured = measuredRequest(body);
    EXPECT_TRUE(isRefused(measured.end,
                          isTaken ? "'mode' parameter missing or invalid" : "Invalid JSON data"));
    EXPECT_GT(measured.peak, body.size());
    EXPECT_LE(measured.peak, least + 4 * body.size() + uncounted);
}

}  // namespace

TEST(ProgramJsonMemory, IsFourTimesTheBodyAtMostWhateverItHolds) {
    for (const BodyShape& shape : shapes) {
        SCOPED_TRACE(shape.name);
        expectBounded(shape.text(8 * mebibyte), shape.isTaken);
    }
    for (const auto& [opening, closing] :
         {std::pair("[", "]"), std::pair(R"({"a":)", "}"), std::pair(R"([{"signature":)", "}]")}) {
        SCOPED_TRACE(opening);
        expectBounded(nested(opening, closing, 8 * mebibyte), true);
    }
}

TEST(ProgramJsonMemory, IsFourTimesTheBodyAtMostWhereTheParsersBuffersGrow) {
    // They double: behind a power of two, and behind one times fifteen.
    for (const std::size_t length : {4 * mebibyte, 15 * mebibyte / 2}) {
        SCOPED_TRACE(length);
        expectBounded(shapes.front().text(length + shapes.front().start.size() + 4), true);
    }
}

TEST(ExplainJsonMemory, HoldsNoTreeOfTheBody) {
    const std::string body = nested("[", "]", 8 * mebibyte);
    ProgramCall call;
    call.path = programPath("projectctl");
    call.arguments = {call.path, "explain", "--content-type", "application/json", "--body", "-"};
    call.pieces = {body};
    const MeasuredEnd measured = measuredRun(call);
    EXPECT_EQ(measured.end.status, 0) << measured.end.errors;
    EXPECT_NE(measured.end.output.find("Rule request.mode:"), std::string::npos);
    EXPECT_LE(measured.peak, 8 * body.size());
}
