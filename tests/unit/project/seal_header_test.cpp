#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "project/project_file.h"
#include "project/stream.h"
#include "tests/support/attribute_values.h"
#include "tests/support/project_builder.h"
#include "tests/support/random_operands.h"
#include "tests/support/temporary_folder.h"

namespace {

class SealHeader : public testing::Test {
protected:
    SealHeader() {
        for (const auto& [id, value] : someValues) {
            file.insertAttribute(id, value);
        }
        file.path = "kept";
    }

    Stream openFile(const Bytes& bytes, const char* mode = "r+b") const {
        folder.write("project", bytes);
        return Stream(std::fopen(path.c_str(), mode));
    }

    /// What stands in the file once the stream is closed.
    Bytes closed(Stream& stream) const {
        stream.reset();
        return fileBytes(path);
    }

    void expectStoreUnchanged() const {
        EXPECT_EQ(valuesOf(file), someValues);
        EXPECT_EQ(file.path, "kept");
    }

    TemporaryFolder folder;
    ProjectFile file;
    const std::string path = folder.file("project");
};

/// The bytes with the 24 of the header overwritten.
Bytes withoutHeader(Bytes bytes) {
    std::fill(bytes.begin(), bytes.begin() + 24, std::uint8_t{0xEE});
    return bytes;
}

TEST_F(SealHeader, MakesAProjectOfABody) {
    const Bytes finished = projectBytes(someValues);
    Stream stream = openFile(withoutHeader(finished));
    EXPECT_TRUE(file.sealHeader(stream.get()));
    EXPECT_EQ(closed(stream), finished);
    expectStoreUnchanged();
    ProjectFile loaded;
    EXPECT_TRUE(loaded.load(path.c_str()));
}

TEST_F(SealHeader, TakesTheCountFromTheTable) {
    ProjectImage image = projectImage({{1, {10}}, {2, {20, 21}}, {3, {30}}});
    image.entryCount = 2;
    Stream stream = openFile(withoutHeader(image.bytes()));
    EXPECT_TRUE(file.sealHeader(stream.get()));
    EXPECT_EQ(closed(stream), image.bytes());
}

TEST_F(SealHeader, WritesACountOfZeroForAnEmptyTable) {
    ProjectImage image;
    image.values = randomBytes(50);
    Stream stream = openFile(withoutHeader(image.bytes()));
    EXPECT_TRUE(ProjectFile().sealHeader(stream.get()));
    EXPECT_EQ(closed(stream), image.bytes());
}

TEST_F(SealHeader, DigestsBodiesOfManyLengthsWhereverTheStreamStands) {
    for (const std::size_t length : {1U, 55U, 56U, 64U, 5000U, 100000U}) {
        ProjectImage image;
        image.entryCount = 2;
        image.values = randomBytes(length);
        Stream stream = openFile(withoutHeader(image.bytes()));
        ASSERT_EQ(std::fseek(stream.get(), static_cast<long>(randomBelow(length)), SEEK_SET), 0);
        EXPECT_TRUE(file.sealHeader(stream.get())) << "length " << length;
        EXPECT_EQ(closed(stream), image.bytes()) << "length " << length;
    }
}

TEST_F(SealHeader, SealsABodyThatIsStillInTheStreamsBuffer) {
    const Bytes finished = projectBytes(someValues);
    const Bytes unsealed = withoutHeader(finished);
    Stream stream = openFile({}, "w+b");
    ASSERT_EQ(std::fwrite(unsealed.data(), unsealed.size(), 1, stream.get()), 1U);
    EXPECT_TRUE(file.sealHeader(stream.get()));
    EXPECT_EQ(closed(stream), finished);
}

TEST_F(SealHeader, NeitherFlushesNorClosesTheStream) {
    const Bytes unsealed = withoutHeader(projectBytes(someValues));
    Stream stream = openFile(unsealed);
    EXPECT_TRUE(file.sealHeader(stream.get()));
    EXPECT_EQ(fileBytes(path), unsealed);
    EXPECT_EQ(std::ftell(stream.get()), 24);
    EXPECT_EQ(closed(stream), projectBytes(someValues));
}

TEST_F(SealHeader, LeavesAHeaderWithoutABodyAsItIs) {
    for (const std::size_t size : {0U, 23U, 24U}) {
        const Bytes bytes(size, 0x31);
        Stream stream = openFile(bytes);
        EXPECT_FALSE(file.sealHeader(stream.get())) << size << " bytes";
        EXPECT_EQ(closed(stream), bytes) << size << " bytes";
    }
    expectStoreUnchanged();
}

TEST_F(SealHeader, LeavesABodyThatCannotBeReadAsItIs) {
    const Bytes bytes = withoutHeader(projectBytes(someValues));
    openFile(bytes);
    Stream stream(std::fopen(path.c_str(), "ab"));
    EXPECT_FALSE(file.sealHeader(stream.get()));
    EXPECT_EQ(closed(stream), bytes);
    expectStoreUnchanged();
}

TEST_F(SealHeader, FailsWhenTheHeaderCannotBeWritten) {
    const Bytes bytes = withoutHeader(projectBytes(someValues));
    Stream stream = openFile(bytes, "rb");
    EXPECT_FALSE(file.sealHeader(stream.get()));
    EXPECT_EQ(closed(stream), bytes);
    expectStoreUnchanged();
}

TEST_F(SealHeader, FailsOnAStreamThatHasNoPositions) {
    std::array<int, 2> ends;
    ASSERT_EQ(::pipe(ends.data()), 0);
    Stream stream(::fdopen(ends[0], "rb"));
    EXPECT_FALSE(file.sealHeader(stream.get()));
    ::close(ends[1]);
    expectStoreUnchanged();
}

}  // namespace
