// No file that projectctl opens would pass to a program that it started.

#include <fcntl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "tests/faults/call_tracer.h"
#include "tests/projectctl/projectctl_run.h"
#include "tests/support/temporary_folder.h"

namespace {

using Files = std::set<std::string>;

/// Whether the descriptor at this path below /proc is closed when another program takes the
/// process's place.
bool closesOnExec(const std::filesystem::path& information) {
    std::ifstream stream(information);
    std::string name;
    unsigned flags = 0;
    stream >> name >> name >> name >> std::oct >> flags;  // "pos:", a number, "flags:"
    return (flags & O_CLOEXEC) != 0;
}

/// Looks at the descriptors of a program before each of its system calls.
struct DescriptorWatch {
    int refusedFlag = 0;  ///< opening with it fails
    int error = 0;        ///< with this
    Files inherited{};    ///< descriptors that the program was started with
    Files opened{};       ///< files that it opened
    Files handedOn{};     ///< those that it would hand on

    CallChange operator()(pid_t process, const SystemCall& call) {
        const std::filesystem::path self = "/proc/" + std::to_string(process);
        for (const auto& entry : std::filesystem::directory_iterator(self / "fd")) {
            const std::string descriptor = entry.path().filename();
            if (call.index == 0) {
                inherited.insert(descriptor);
            } else if (!inherited.contains(descriptor)) {
                const std::string file = std::filesystem::read_symlink(entry.path());
                opened.insert(file);
                if (!closesOnExec(self / "fdinfo" / descriptor)) {
                    handedOn.insert(file);
                }
            }
        }
        const auto flags = static_cast<int>(call.arguments[2]);
        return call.number == SYS_openat && refusedFlag != 0 && (flags & refusedFlag) == refusedFlag
                   ? CallChange{.kind = CallChange::Kind::replaced, .value = -error}
                   : CallChange{};
    }
};

TEST(InheritedDescriptors, AreNoneOfProjectctl) {
    const TemporaryFolder folder;
    const std::string project = folder.file("project");
    const std::string letter = folder.write("letter", {'x'});
    const std::string scalar = folder.write("scalar", {'7'});
    const std::string signature = folder.file("signature");
    const std::string text = "BAQEBAQE";
    const ProgramEnd made = runProjectctl({"create", project});
    ASSERT_EQ(made.status, 0) << made.errors;
    unsigned copies = 0;
    const auto fresh = [&] { return folder.file("copy" + std::to_string(copies++)); };
    Files opened;
    // A file system where each file has a name, and a file on which somebody has a lease.
    for (const auto& [flag, error] :
         {std::pair(0, 0), {O_TMPFILE, EOPNOTSUPP}, {O_NONBLOCK, EWOULDBLOCK}}) {
        for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
                 {"create", fresh()},
                 {"create", fresh(), "--from-scalar", scalar},
                 {"create", letter},
                 {"show", project},
                 {"check", project},
                 {"strip", project, fresh()},
                 {"sign", project},
                 {"sign", project, letter},
                 {"verify", project, text, letter},
                 {"verify", project, text},
                 {"explain", "--body", letter},
                 {"explain", "--project", project, "--file", letter},
                 {"explain", "--project", project, "--data", "x", "--signature", text},
                 {"export", project},
                 {"convert", letter, "--from", "der", "--to", "hex"},
                 {"digest", letter}}) {
            DescriptorWatch watch{.refusedFlag = flag, .error = error};
            CallTracer tracer(std::ref(watch));
            ProgramCall call = projectctlCall(arguments, "data");
            call.environment["TMPDIR"] = folder.path();
            call.tracer = std::ref(tracer);
            const ProgramEnd end = runProgram(call);
            EXPECT_EQ(end.signal, 0);
            // The seeding of the generator opens it as it always has.
            watch.handedOn.erase("/dev/urandom");
            EXPECT_EQ(watch.handedOn, Files{}) << testing::PrintToString(arguments);
            opened.merge(watch.opened);
        }
    }
    for (const std::string& file : {project, letter, scalar, folder.path()}) {
        EXPECT_TRUE(opened.contains(file)) << file;
    }
}

}  // namespace
