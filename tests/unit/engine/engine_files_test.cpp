#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <new>

#include "engine/mapped_file.h"
#include "tests/support/failing_calls.h"
#include "tests/support/open_files.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/unit/engine/engine_test.h"

namespace {

/// Whether this process has a mapping of the file.
bool isMapped(const std::string& path) {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        if (line.ends_with(path)) {
            return true;
        }
    }
    return false;
}

class EngineFiles : public EngineTest {
protected:
    const ProjectKey key = randomProjectKey();
    const std::string projectPath = project(key);
    const Bytes content = randomBytes(5000);
    const std::string file = folder.write("file", content);
};

TEST_F(EngineFiles, AreSignedAsTheirContent) {
    seedNonces(11);
    const std::string ofData = signedText(projectPath, content);
    seedNonces(11);
    EXPECT_EQ(signedFileText(projectPath, file), ofData);
    EXPECT_TRUE(judgeAccepts(key, content, readSignatureText(ofData)));
}

TEST_F(EngineFiles, AreVerifiedAsTheirContent) {
    const std::string text = signedText(projectPath, content);
    EXPECT_TRUE(fileVerifies(projectPath, file, text));
    EXPECT_TRUE(fileVerifies(projectPath, folder.write("other name", content), text));
    Bytes changed = content;
    changed.back() ^= 1;
    EXPECT_FALSE(fileVerifies(projectPath, folder.write("changed", changed), text));
    changed.back() ^= 1;
    changed.push_back(0);
    EXPECT_FALSE(fileVerifies(projectPath, folder.write("longer", changed), text));
}

TEST_F(EngineFiles, MayHaveOneByteOrAPageOfThem) {
    for (const std::size_t size : {1U, 4095U, 4096U, 4097U}) {
        const Bytes bytes = randomBytes(size);
        const std::string path = folder.write("sized", bytes);
        const std::string text = signedFileText(projectPath, path);
        EXPECT_TRUE(judgeAccepts(key, bytes, readSignatureText(text))) << size << " bytes";
        EXPECT_TRUE(fileVerifies(projectPath, path, text)) << size << " bytes";
    }
}

TEST_F(EngineFiles, AreRefusedWhenTheyCannotBeMapped) {
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::string text = signedText(projectPath, content);
    for (const std::string& bad :
         {folder.write("empty", {}), folder.file("missing"), folder.path(), fifo, std::string()}) {
        EXPECT_EQ(signedFileText(projectPath, bad), "") << bad;
        EXPECT_FALSE(fileVerifies(projectPath, bad, text)) << bad;
    }
}

TEST_F(EngineFiles, AreRefusedUnderAProjectThatDoesNotLoad) {
    const std::string text = signedText(projectPath, content);
    EXPECT_EQ(signedFileText(folder.file("missing"), file), "");
    EXPECT_FALSE(fileVerifies(folder.file("missing"), file, text));
    EXPECT_EQ(signedFileText(folder.file("missing"), folder.file("missing")), "");
}

TEST_F(EngineFiles, AreNotOpenedWithoutPathsAndText) {
    const std::string text = signedText(projectPath, content);
    SignatureBuffer buffer{};
    ScopedFailingCalls calls;
    calls.beforeStatus = [](unsigned /*number*/) {};
    EXPECT_FALSE(signFile(nullptr, file.c_str(), buffer.data()));
    EXPECT_FALSE(signFile(projectPath.c_str(), nullptr, buffer.data()));
    EXPECT_FALSE(signFile(projectPath.c_str(), file.c_str(), nullptr));
    EXPECT_EQ(buffer, SignatureBuffer{});
    EXPECT_FALSE(verifyFile(nullptr, file.c_str(), text.c_str()));
    EXPECT_FALSE(verifyFile(projectPath.c_str(), nullptr, text.c_str()));
    EXPECT_FALSE(verifyFile(projectPath.c_str(), file.c_str(), nullptr));
    // Neither the file nor the project.
    EXPECT_EQ(calls.statusCalls, 0U);
    EXPECT_EQ(calls.streamCalls, 0U);
}

TEST_F(EngineFiles, AreReleasedWithTheProject) {
    const std::string text = signedFileText(projectPath, file);
    const auto before = openFiles();
    signedFileText(projectPath, file);
    fileVerifies(projectPath, file, text);
    fileVerifies(folder.file("missing"), file, text);
    fileVerifies(projectPath, folder.path(), text);
    EXPECT_EQ(openFiles(), before);
}

TEST_F(EngineFiles, AreReleasedWhenThereIsNoMemoryForTheProject) {
    const auto before = openFiles();
    SignatureBuffer buffer{};
    // For the bytes of the project's file, and for its directory.
    for (const unsigned given : {0U, 1U}) {
        ScopedFailingCalls calls;
        calls.beforeStatus = [](unsigned /*number*/) {};
        for (const bool signs : {true, false}) {
            calls.blockLimit = 0;
            calls.givenBlocks = given;
            calls.statusCalls = 0;
            bool isRefused = false;
            try {
                signs ? signFile(projectPath.c_str(), file.c_str(), buffer.data())
                      : verifyFile(projectPath.c_str(), file.c_str(), "AAAA");
            } catch (const std::bad_alloc&) {
                isRefused = true;
            }
            calls.blockLimit = ~0UL;
            EXPECT_TRUE(isRefused) << given << ", signs " << signs;
            EXPECT_GE(calls.statusCalls, 2U) << "the file was not mapped";
        }
    }
    EXPECT_EQ(openFiles(), before);
    EXPECT_FALSE(isMapped(file));
}

TEST_F(EngineFiles, AreRefusedWhenTheyBecomeShorterMeanwhile) {
    // By a byte, before each question for their size but the first: the last page stays readable.
    const std::string text = signedText(projectPath, content);
    for (const auto& [question, fault] :
         {std::pair{2U, FileFault::changed}, std::pair{3U, FileFault::cut}}) {
        for (const bool signs : {true, false}) {
            folder.write("file", content);
            ScopedFailingCalls calls;
            calls.beforeStatus = [&, question = question](unsigned number) {
                if (number == question) {
                    EXPECT_EQ(::truncate(file.c_str(), static_cast<off_t>(content.size() - 1)), 0);
                }
            };
            SignatureBuffer buffer{};
            EngineReport report;
            const bool answer =
                signs ? signFile(projectPath.c_str(), file.c_str(), buffer.data(), report)
                      : verifyFile(projectPath.c_str(), file.c_str(), text.c_str(), report);
            EXPECT_FALSE(answer) << "question " << question << ", signs " << signs;
            EXPECT_EQ(report.input.fault, fault) << "question " << question;
            EXPECT_EQ(buffer, SignatureBuffer{});
            EXPECT_GE(calls.statusCalls, question);
        }
    }
}

TEST_F(EngineFiles, MayBecomeLongerMeanwhile) {
    const std::string text = signedText(projectPath, content);
    // The low 32 bits of a size are that of the mapping alone.
    const std::vector<std::pair<unsigned, off_t>> changes{
        {2, 1000000}, {3, 1000000}, {3, off_t{1} << 32}, {3, (off_t{1} << 32) + 1}};
    for (const auto& [question, size] : changes) {
        for (const bool signs : {true, false}) {
            folder.write("file", content);
            ScopedFailingCalls calls;
            calls.beforeStatus = [&, question = question, size = size](unsigned number) {
                if (number == question) {
                    EXPECT_EQ(::truncate(file.c_str(), size), 0);
                }
            };
            SignatureBuffer buffer{};
            EXPECT_TRUE(signs ? signFile(projectPath.c_str(), file.c_str(), buffer.data())
                              : verifyFile(projectPath.c_str(), file.c_str(), text.c_str()))
                << "question " << question << ", size " << size << ", signs " << signs;
            EXPECT_TRUE(!signs || verifies(projectPath, content, buffer.data()));
            EXPECT_GE(calls.statusCalls, question);
        }
    }
}

TEST_F(EngineFiles, AreRefusedWhenTheMappingHasLessThanTheirSize) {
    // Short while they are mapped, and whole before and behind: there is other memory, or none,
    // where their end would be.
    const Bytes pages(20000, 'x');
    for (const off_t size : {off_t{5}, (off_t{1} << 32) + 5, off_t{19999}}) {
        const std::string path = folder.write("pages", pages);
        ScopedFailingCalls calls;
        calls.beforeStatus = [&](unsigned number) {
            EXPECT_EQ(::truncate(path.c_str(), number == 2 ? size : off_t{20000}), 0);
        };
        MappedInput input;
        EXPECT_TRUE(mapInputFile(input, path.c_str()).empty()) << size;
        EXPECT_EQ(input.file.address, nullptr) << size;
        EXPECT_EQ(input.fault, FileFault::changed) << size;
    }
}

TEST_F(EngineFiles, AreToldAsChangedWhenTheyAreEmptiedWhileTheyAreMapped) {
    ScopedFailingCalls calls;
    calls.beforeStatus = [&](unsigned number) {
        if (number == 2) {
            EXPECT_EQ(::truncate(file.c_str(), 0), 0);
        }
    };
    MappedInput input;
    EXPECT_TRUE(mapInputFile(input, file.c_str()).empty());
    EXPECT_EQ(input.fault, FileFault::changed);
}

TEST_F(EngineFiles, AreRefusedForTheirSizeBeforeTheyAreMapped) {
    // Mapping asks for the size a second time.
    for (const std::uintmax_t size : {0UL, 1UL << 31, 1UL << 32}) {
        std::filesystem::resize_file(file, size);
        ScopedFailingCalls calls;
        calls.beforeStatus = [](unsigned /*number*/) {};
        MappedInput input;
        EXPECT_TRUE(mapInputFile(input, file.c_str()).empty()) << size;
        EXPECT_EQ(calls.statusCalls, 1U) << size;
    }
}

TEST_F(EngineFiles, AreAskedForTheirSizeThreeTimes) {
    ScopedFailingCalls calls;
    calls.beforeStatus = [](unsigned /*number*/) {};
    MappedInput input;
    mapInputFile(input, file.c_str());
    EXPECT_EQ(calls.statusCalls, 2U);
    EXPECT_TRUE(input.endWhole());
    EXPECT_EQ(calls.statusCalls, 3U);
}

TEST_F(EngineFiles, TakeNoMemoryInProportionToTheirSize) {
    const std::string large = folder.write("large", Bytes(4 << 20, 7));
    ScopedFailingCalls calls;
    SignatureBuffer buffer{};
    EXPECT_TRUE(signFile(projectPath.c_str(), large.c_str(), buffer.data()));
    EXPECT_TRUE(verifyFile(projectPath.c_str(), large.c_str(), buffer.data()));
    EXPECT_GT(calls.largestRequest, 0U);
    EXPECT_LT(calls.largestRequest, 64U << 10);
}

}  // namespace
