#include "tools/files/file_digest.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <openssl/ripemd.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "tests/support/failing_calls.h"
#include "tests/support/random_operands.h"
#include "tests/support/standard_streams.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/cut_report.h"
#include "tests/unit/tools/file_calls.h"
#include "tests/unit/tools/scoped_terminal.h"
#include "tools/files/mapping_progress.h"

namespace {

Bytes judgedDigest(const Bytes& data) {
    Bytes digest(RIPEMD160_DIGEST_LENGTH);
    RIPEMD160(data.data(), data.size(), digest.data());
    return digest;
}

/// The digests as they come; for a file without one, the words of the refusal.
std::vector<Bytes> digestsOf(const std::vector<std::string>& paths) {
    std::vector<Bytes> digests;
    digestFiles(paths, [&](std::size_t place, const FileDigest& file) {
        EXPECT_EQ(place, digests.size());
        digests.emplace_back(file.digest.begin(), file.digest.end());
        EXPECT_EQ(file.isMissing, paths[place].ends_with("missing"));
        if (file.refusal.has_value()) {
            digests.back().assign(file.refusal->text.begin(), file.refusal->text.end());
        }
    });
    return digests;
}

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

TEST(FileDigests, AreThoseOfLibcryptoInTheOrderOfTheFiles) {
    const TemporaryFolder folder;
    std::vector<std::string> paths;
    std::vector<Bytes> expected;
    for (int i = 0; i < 300; ++i) {
        // Every tenth takes much longer than those behind it.
        const Bytes data = randomBytes(i % 10 == 0 ? 1'000'000 : 1 + randomBelow(200));
        paths.push_back(folder.write(std::to_string(i), data));
        expected.push_back(judgedDigest(data));
    }
    EXPECT_EQ(digestsOf(paths), expected);
}

TEST(FileDigests, StandBesideRefusals) {
    const TemporaryFolder folder;
    const std::string empty = folder.write("empty", {});
    const std::string missing = folder.file("missing");
    const std::string letter = folder.write("letter", {'a'});
    const ScopedInput input("b");
    const std::vector<Bytes> expected = {
        bytesOf(empty + ": is empty"),
        judgedDigest({'a'}),
        bytesOf(missing + ": cannot be opened: No such file or directory"),
        bytesOf(folder.path() + ": is a directory"),
        judgedDigest({'b'}),
        judgedDigest({'a'}),
        bytesOf("standard input: can be read only once; name it once")};
    EXPECT_EQ(digestsOf({empty, letter, missing, folder.path(), "-", letter, "-"}), expected);
    EXPECT_TRUE(digestFile(missing, Progress::silent).isMissing);
    EXPECT_FALSE(digestFile(folder.path(), Progress::silent).isMissing);
    EXPECT_FALSE(digestFile(letter + "/missing", Progress::silent).isMissing);
    EXPECT_EQ(digestsOf({}), std::vector<Bytes>{});
}

TEST(DigestedFile, GivesItsContentUnlessItIsLongOrHasLostSome) {
    const ScopedCutReport report;
    const TemporaryFolder folder;
    constexpr std::size_t size = 100'000;
    const std::string path = folder.write("letter", Bytes(size, 'a'));
    const DigestedFile file(path, Progress::silent);
    EXPECT_EQ(file.content(size), std::string(size, 'a'));
    EXPECT_EQ(file.content(size - 1), std::nullopt);
    std::filesystem::resize_file(path, size - 1);
    EXPECT_EQ(file.content(size), std::nullopt);
    std::filesystem::resize_file(path, 1);
    EXPECT_EQ(file.content(size), std::nullopt) << "pages are lost";
    const DigestedFile missing(folder.file("missing"), Progress::silent);
    EXPECT_EQ(missing.content(size), std::nullopt);
}

/// While it lives, threads are to get a stack that no address space has room for.
class ScopedNoThreads {
public:
    ScopedNoThreads() {
        ::pthread_getattr_default_np(&before_);
        pthread_attr_t wanted;
        ::pthread_attr_init(&wanted);
        ::pthread_attr_setstacksize(&wanted, std::size_t{1} << 60);
        ::pthread_setattr_default_np(&wanted);
        ::pthread_attr_destroy(&wanted);
    }
    ~ScopedNoThreads() {
        ::pthread_setattr_default_np(&before_);
        ::pthread_attr_destroy(&before_);
    }
    ScopedNoThreads(const ScopedNoThreads&) = delete;
    ScopedNoThreads& operator=(const ScopedNoThreads&) = delete;

private:
    pthread_attr_t before_;
};

TEST(FileDigests, AreThereWhereNoThreadCanBeHad) {
    const TemporaryFolder folder;
    const std::string letter = folder.write("letter", {'a'});
    const ScopedNoThreads none;
    EXPECT_THROW(std::jthread([] {}), std::system_error);
    EXPECT_EQ(digestsOf({letter, letter, letter}), std::vector<Bytes>(3, judgedDigest({'a'})));
}

std::size_t threadsOfThisProcess() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(tasks, {}));
}

TEST(FileDigests, AreTakenByAllCoresUntilTheirTakerHasEnough) {
    const TemporaryFolder folder;
    const std::size_t cores = std::thread::hardware_concurrency();
    const std::vector<std::string> paths(100 * cores, folder.write("large", Bytes(1 << 20, 'a')));
    const std::size_t before = threadsOfThisProcess();
    std::size_t threads = 0;
    const auto take = [&](std::size_t place, const FileDigest& /*file*/) {
        if (place == 3 * cores) {
            threads = threadsOfThisProcess();
            throw std::runtime_error("enough");
        }
    };
    const ScopedFileCalls calls;
    EXPECT_THROW(digestFiles(paths, take), std::runtime_error);
    EXPECT_EQ(threads, before + cores) << "beside those that were there";
    EXPECT_LT(calls.opened, paths.size()) << "files that nobody wants any more";
}

TEST(FileDigests, ShowTheProgressOfASingleFile) {
    const TemporaryFolder folder;
    const std::string large = folder.write("large", {});
    std::filesystem::resize_file(large, MappingProgress::quietSize + 1);
    for (const std::size_t count : {1U, 2U}) {
        const ScopedTerminal terminal(STDERR_FILENO);
        digestFiles(std::vector<std::string>(count, large),
                    [](std::size_t /*place*/, const FileDigest& /*file*/) {});
        std::fputs("end", stderr);
        EXPECT_EQ(terminal.waitFor("end").starts_with("\r["), count == 1);
    }
}

TEST(FileDigests, TellWhyStandardInputHasNone) {
    const TemporaryFolder folder;
    const ScopedInput input("");
    const int descriptor = ::open(folder.path().c_str(), O_RDONLY | O_CLOEXEC);
    ::dup2(descriptor, STDIN_FILENO);
    ::close(descriptor);
    EXPECT_EQ(digestsOf({"-"}), std::vector<Bytes>{bytesOf("standard input: Is a directory")});
}

TEST(FileDigests, EndWithWhatTheirTakerThrows) {
    const TemporaryFolder folder;
    const std::vector<std::string> paths(50, folder.write("letter", {'a'}));
    std::size_t taken = 0;
    const auto take = [&](std::size_t /*place*/, const FileDigest& /*file*/) {
        if (++taken == 3) {
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(digestFiles(paths, take), std::runtime_error);
    EXPECT_EQ(taken, 3U);
}

}  // namespace
