#include "engine/mapped_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/limits.h"
#include "tests/support/standard_streams.h"
#include "tests/support/temporary_folder.h"

namespace {

bool isOpen(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) != -1;
}

/// The line of the process's memory map that begins at this address, if there is one.
std::optional<std::string> mappingAt(const std::uint8_t* address) {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        if (std::stoull(line, nullptr, 16) == reinterpret_cast<std::uintptr_t>(address)) {
            return line;
        }
    }
    return std::nullopt;
}

class MappedFileTest : public testing::Test {
protected:
    TemporaryFolder folder;
    const Bytes content = {'c', 'o', 'n', 't', 'e', 'n', 't'};
    const std::string path = folder.write("file", content);
    const std::string empty = folder.write("empty", {});
};

TEST_F(MappedFileTest, StartsClosed) {
    MappedFile file;
    EXPECT_EQ(file.descriptor, -1);
    EXPECT_EQ(file.address, nullptr);
    EXPECT_EQ(file.size(), 0U);
    EXPECT_FALSE(file.map());
    EXPECT_FALSE(file.unmap());
    EXPECT_FALSE(file.close());
    EXPECT_EQ(file.descriptor, -1);
}

TEST_F(MappedFileTest, WorksUnderWhateverDescriptorIsFree) {
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        int descriptor = -1;
        Bytes read;
        bool ended = false;
        {
            const ScopedClosedDescriptor closed(standard);
            MappedInput input;
            const std::span<const std::uint8_t> bytes = mapInputFile(input, path.c_str());
            descriptor = input.file.descriptor;
            read.assign(bytes.begin(), bytes.end());
            ended = input.file.close() && !isOpen(standard);
        }
        EXPECT_EQ(descriptor, standard);
        EXPECT_EQ(read, content) << standard;
        EXPECT_TRUE(ended) << standard;
    }
}

TEST_F(MappedFileTest, OpensMapsUnmapsAndCloses) {
    MappedFile file;
    ASSERT_TRUE(file.open(path.c_str()));
    EXPECT_EQ(file.size(), content.size());
    EXPECT_EQ(file.address, nullptr);
    ASSERT_TRUE(file.map());
    EXPECT_EQ(Bytes(file.address, file.address + content.size()), content);
    EXPECT_EQ(file.size(), content.size());
    const std::uint8_t* mapped = file.address;
    EXPECT_TRUE(file.unmap());
    EXPECT_EQ(file.address, nullptr);
    EXPECT_FALSE(mappingAt(mapped).has_value());
    const int descriptor = file.descriptor;
    EXPECT_TRUE(isOpen(descriptor));
    EXPECT_TRUE(file.close());
    EXPECT_EQ(file.descriptor, -1);
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_FALSE(file.close());
}

TEST_F(MappedFileTest, MapsReadOnlyAndPrivate) {
    MappedFile file;
    ASSERT_TRUE(file.open(path.c_str()));
    ASSERT_TRUE(file.map());
    const std::optional<std::string> mapping = mappingAt(file.address);
    ASSERT_TRUE(mapping.has_value());
    EXPECT_NE(mapping->find(" r--p "), std::string::npos) << *mapping;
    EXPECT_EQ(::fcntl(file.descriptor, F_GETFL) & O_ACCMODE, O_RDONLY);
}

TEST_F(MappedFileTest, KeepsTheFirstOfTwoOpenedFiles) {
    MappedFile file;
    ASSERT_TRUE(file.open(path.c_str()));
    const int descriptor = file.descriptor;
    EXPECT_FALSE(file.open(empty.c_str()));
    EXPECT_EQ(file.descriptor, descriptor);
    EXPECT_EQ(file.size(), content.size());
}

TEST_F(MappedFileTest, DoesNotOpenWhileAMappingStands) {
    MappedFile file;
    ASSERT_TRUE(file.open(path.c_str()));
    ASSERT_TRUE(file.map());
    const std::uint8_t* mapped = file.address;
    ASSERT_TRUE(file.close());
    EXPECT_EQ(file.address, mapped);
    EXPECT_EQ(Bytes(mapped, mapped + content.size()), content);
    EXPECT_FALSE(file.open(path.c_str()));
    EXPECT_EQ(file.descriptor, -1);
    EXPECT_FALSE(file.map());
    EXPECT_FALSE(file.unmap());
    EXPECT_EQ(::munmap(const_cast<std::uint8_t*>(mapped), content.size()), 0);
}

TEST_F(MappedFileTest, OpensAgainOnceClosed) {
    MappedFile file;
    ASSERT_TRUE(file.open(empty.c_str()));
    ASSERT_TRUE(file.close());
    EXPECT_TRUE(file.open(path.c_str()));
    EXPECT_EQ(file.size(), content.size());
}

TEST_F(MappedFileTest, MapsOnce) {
    MappedFile file;
    ASSERT_TRUE(file.open(path.c_str()));
    ASSERT_TRUE(file.map());
    const std::uint8_t* mapped = file.address;
    EXPECT_FALSE(file.map());
    EXPECT_EQ(file.address, mapped);
    EXPECT_EQ(Bytes(mapped, mapped + content.size()), content);
    EXPECT_TRUE(file.unmap());
    EXPECT_FALSE(file.unmap());
    EXPECT_TRUE(file.map());
}

TEST_F(MappedFileTest, FailsOnAPathThatCannotBeOpened) {
    MappedFile file;
    EXPECT_FALSE(file.open(folder.file("missing").c_str()));
    EXPECT_EQ(file.descriptor, -1);
    EXPECT_TRUE(file.open(path.c_str()));
}

TEST_F(MappedFileTest, DoesNotMapAnEmptyFile) {
    MappedFile file;
    ASSERT_TRUE(file.open(empty.c_str()));
    EXPECT_EQ(file.size(), 0U);
    EXPECT_FALSE(file.map());
    EXPECT_EQ(file.address, nullptr);
}

TEST_F(MappedFileTest, OpensAFolderThatCannotBeMapped) {
    int descriptor = -1;
    {
        MappedFile file;
        ASSERT_TRUE(file.open(folder.path().c_str()));
        descriptor = file.descriptor;
        EXPECT_FALSE(file.map());
        EXPECT_EQ(file.address, nullptr);
    }
    EXPECT_FALSE(isOpen(descriptor));
}

TEST_F(MappedFileTest, OpensAFifoWithoutWaitingForAWriter) {
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    MappedFile file;
    EXPECT_TRUE(file.open(fifo.c_str()));
    EXPECT_EQ(file.size(), 0U);
    EXPECT_FALSE(file.map());
}

TEST_F(MappedFileTest, HasNoSizeWhenTheDescriptorIsNoFile) {
    MappedFile file;
    file.descriptor = 1 << 20;
    EXPECT_EQ(file.size(), 0U);
    EXPECT_FALSE(file.map());
    std::uint8_t byte = 0;
    file.address = &byte;
    EXPECT_FALSE(file.unmap());
    EXPECT_EQ(file.address, &byte);
}

TEST_F(MappedFileTest, KeepsTheMappingOfAFileThatIsEmptyByNow) {
    MappedFile file;
    ASSERT_TRUE(file.open(path.c_str()));
    ASSERT_TRUE(file.map());
    ASSERT_EQ(::truncate(path.c_str(), 0), 0);
    EXPECT_FALSE(file.unmap());
    EXPECT_NE(file.address, nullptr);
    ASSERT_EQ(::truncate(path.c_str(), 1), 0);
    EXPECT_TRUE(file.unmap());
}

TEST_F(MappedFileTest, KeepsAMappingThatTheSystemRefusesToEnd) {
    MappedFile file;
    ASSERT_TRUE(file.open(path.c_str()));
    ASSERT_TRUE(file.map());
    ++file.address;
    EXPECT_FALSE(file.unmap());
    EXPECT_NE(file.address, nullptr);
    --file.address;
    EXPECT_TRUE(file.unmap());
}

TEST_F(MappedFileTest, ReleasesMappingAndDescriptorAtItsEnd) {
    int descriptor = -1;
    const std::uint8_t* mapped = nullptr;
    {
        MappedFile file;
        ASSERT_TRUE(file.open(path.c_str()));
        ASSERT_TRUE(file.map());
        descriptor = file.descriptor;
        mapped = file.address;
    }
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_FALSE(mappingAt(mapped).has_value());
}

TEST_F(MappedFileTest, ClosesItsDescriptorEvenWhenTheMappingCannotEnd) {
    int descriptor = -1;
    const std::uint8_t* mapped = nullptr;
    {
        MappedFile file;
        ASSERT_TRUE(file.open(path.c_str()));
        ASSERT_TRUE(file.map());
        descriptor = file.descriptor;
        mapped = file.address;
        ASSERT_EQ(::truncate(path.c_str(), 0), 0);
    }
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_TRUE(mappingAt(mapped).has_value());
    EXPECT_EQ(::munmap(const_cast<std::uint8_t*>(mapped), content.size()), 0);
}

TEST_F(MappedFileTest, LeavesAMappingWithoutDescriptorAtItsEnd) {
    const std::uint8_t* mapped = nullptr;
    {
        MappedFile file;
        ASSERT_TRUE(file.open(path.c_str()));
        ASSERT_TRUE(file.map());
        ASSERT_TRUE(file.close());
        mapped = file.address;
    }
    EXPECT_TRUE(mappingAt(mapped).has_value());
    EXPECT_EQ(::munmap(const_cast<std::uint8_t*>(mapped), content.size()), 0);
}

TEST_F(MappedFileTest, GivesTheWholeFile) {
    MappedInput input;
    const std::span<const std::uint8_t> bytes = mapInputFile(input, path.c_str());
    EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), content);
    EXPECT_EQ(bytes.data(), input.file.address);
    EXPECT_EQ(bytes.data(), input.bytes.data());
}

/// A path, what stands against what is there, and its size.
struct JudgedFile {
    std::string path;
    FileFault fault;
    std::uint64_t size;
};

TEST_F(MappedFileTest, GivesNothingOfWhatCannotBeMappedAndTellsWhy) {
    const std::string fifo = folder.file("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::vector<JudgedFile> files{
        {folder.file("missing"), FileFault::open, 0}, {path + "/x", FileFault::open, 0},
        {"/proc/self", FileFault::directory, 0},      {fifo, FileFault::notRegular, 0},
        {"/dev/null", FileFault::notRegular, 0},      {empty, FileFault::empty, 0},
    };
    for (const auto& [size, fault] :
         {std::pair{std::uint64_t{1} << 31, FileFault::tooLarge},
          {(std::uint64_t{1} << 32) - 1, FileFault::tooLarge},
          {std::uint64_t{1} << 32, FileFault::noBytes},
          {(std::uint64_t{7} << 32) + (std::uint64_t{1} << 31), FileFault::tooLarge},
          {std::uint64_t{8} << 32, FileFault::noBytes}}) {
        files.push_back({folder.write(std::to_string(size), {}), fault, size});
        std::filesystem::resize_file(files.back().path, size);
    }
    for (const auto& [bad, fault, size] : files) {
        MappedInput input;
        EXPECT_TRUE(mapInputFile(input, bad.c_str()).empty()) << bad;
        EXPECT_EQ(input.file.address, nullptr) << bad;
        EXPECT_EQ(input.fault, fault) << bad;
        EXPECT_EQ(input.size, size) << bad;
    }
    // With a size, which some file systems give and some do not.
    MappedInput input;
    EXPECT_TRUE(mapInputFile(input, folder.path().c_str()).empty());
    EXPECT_EQ(input.fault, FileFault::directory);
}

TEST_F(MappedFileTest, TellsWhatTheSystemHasAgainstOpening) {
    for (const auto& [bad, error] :
         {std::pair{folder.file("missing"), ENOENT}, {path + "/x", ENOTDIR}}) {
        MappedInput input;
        mapInputFile(input, bad.c_str());
        EXPECT_EQ(input.openError, error) << bad;
    }
}

TEST_F(MappedFileTest, TellsOfAFileThatTheSystemDoesNotMap) {
    std::filesystem::resize_file(path, (std::uint64_t{1} << 31) - 1);
    MappedInput input;
    {
        const ScopedLimit limit(RLIMIT_AS, 1U << 30);
        mapInputFile(input, path.c_str());
    }
    EXPECT_TRUE(input.bytes.empty());
    EXPECT_EQ(input.fault, FileFault::mapping);
}

TEST_F(MappedFileTest, TellsTheWholeSizeOfAFileOfWhichAPartCounts) {
    const std::uint64_t size = (std::uint64_t{3} << 32) + content.size();
    std::filesystem::resize_file(path, size);
    MappedInput input;
    const std::span<const std::uint8_t> bytes = mapInputFile(input, path.c_str());
    EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), content);
    EXPECT_EQ(input.fault, FileFault::none);
    EXPECT_EQ(input.size, size);
}

TEST_F(MappedFileTest, EndsTheMappingOfAnInput) {
    const std::uint8_t* mapped = nullptr;
    std::int32_t descriptor = -1;
    {
        MappedInput input;
        mapped = mapInputFile(input, path.c_str()).data();
        descriptor = input.file.descriptor;
        ASSERT_TRUE(mappingAt(mapped).has_value());
    }
    EXPECT_FALSE(mappingAt(mapped).has_value());
    EXPECT_FALSE(isOpen(descriptor));
}

TEST_F(MappedFileTest, TellsWhetherAnInputIsStillWhole) {
    MappedInput input;
    ASSERT_EQ(mapInputFile(input, path.c_str()).size(), content.size());
    EXPECT_TRUE(input.isWhole());
    for (const auto& [size, whole] : {std::pair<off_t, bool>{6, false},
                                      {7, true},
                                      {8, true},
                                      {0, false},
                                      {100000, true},
                                      {off_t{1} << 31, true},
                                      {(off_t{1} << 32) - 1, true},
                                      {off_t{1} << 32, true},
                                      {(off_t{1} << 32) + 5, true},
                                      {(off_t{1} << 33) + 1, true}}) {
        ASSERT_EQ(::truncate(path.c_str(), size), 0);
        EXPECT_EQ(input.isWhole(), whole) << size << " bytes";
    }
}

TEST_F(MappedFileTest, TakesNothingElseAwayAtTheEndOfAnInputThatHasGrown) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    void* behind = nullptr;
    {
        MappedInput input;
        const auto* mapped = mapInputFile(input, path.c_str()).data();
        behind = const_cast<std::uint8_t*>(mapped) + page;
        // Unless something stands there already.
        static_cast<void>(::mmap(behind, page, PROT_READ,
                                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0));
        ASSERT_EQ(::truncate(path.c_str(), static_cast<off_t>(2 * page)), 0);
    }
    unsigned char resident = 0;
    EXPECT_EQ(::mincore(behind, page, &resident), 0);
}

}  // namespace
