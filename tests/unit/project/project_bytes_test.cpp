#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <new>

#include "project/project_file.h"
#include "tests/support/attribute_values.h"
#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/temporary_folder.h"

namespace {

struct Content {
    ProjectFault fault;
    Bytes bytes;
};

/// The image of `someValues` with one change.
Bytes changed(const auto& change) {
    ProjectImage image = projectImage(someValues);
    change(image);
    return image.bytes();
}

Bytes beginning(std::size_t size) {
    Bytes bytes = projectBytes(someValues);
    bytes.resize(size);
    return bytes;
}

/// Bytes for each fault that bytes can have, and sound ones.
std::vector<Content> contents() {
    using enum ProjectFault;
    return {
        {none, projectBytes(someValues)},
        {none, ProjectImage().bytes()},
        {header, {}},
        {header, beginning(23)},
        {magic, changed([](ProjectImage& image) { image.magic = "VLT3"; })},
        {noBody, beginning(24)},
        {digest, changed([](ProjectImage& image) { image.bodyDigest = Bytes(16); })},
        {directory, changed([](ProjectImage& image) { image.entryCount = 3; })},
        {emptyValue, changed([](ProjectImage& image) { image.directory[1].size = 0; })},
        {valueRange, changed([](ProjectImage& image) { ++image.directory[1].size; })},
    };
}

TEST(ProjectInMemory, LoadAsAFileThatHoldsThem) {
    const TemporaryFolder folder;
    for (const auto& [fault, bytes] : contents()) {
        SCOPED_TRACE(static_cast<int>(fault));
        ProjectFile ofFile;
        ProjectFile ofBytes;
        const std::string path = folder.write("project", bytes);
        const ProjectLoading expected = ofFile.loadReporting(path.c_str());
        const ProjectLoading loading = ofBytes.loadBytes(bytes);
        EXPECT_EQ(loading.fault, fault);
        EXPECT_EQ(loading.fault, expected.fault);
        EXPECT_EQ(loading.error, expected.error);
        EXPECT_EQ(loading.fileSize, expected.fileSize);
        EXPECT_EQ(loading.entryCount, expected.entryCount);
        EXPECT_EQ(loading.refusedEntry, expected.refusedEntry);
        EXPECT_EQ(valuesOf(ofBytes), valuesOf(ofFile));
        EXPECT_EQ(ofBytes.path, "");
    }
}

TEST(ProjectInMemory, ReplaceWhatWasLoadedAndAreNotNeededAfterwards) {
    ProjectFile file;
    Bytes bytes = projectBytes({{3, {30}}});
    file.loadBytes(bytes);
    bytes = projectBytes(someValues);
    EXPECT_EQ(file.loadBytes(bytes).fault, ProjectFault::none);
    std::fill(bytes.begin(), bytes.end(), 0);
    EXPECT_EQ(valuesOf(file), someValues);
    EXPECT_EQ(file.loadBytes(bytes).fault, ProjectFault::magic);
    EXPECT_TRUE(file.isEmpty());
}

TEST(ProjectInMemory, LeaveNothingWhereACallFails) {
    using enum ProjectFault;
    const Bytes bytes = projectBytes(someValues);
    // The header is read, the size looked for in three steps, the body read.
    constexpr std::array faults = {header, unreadable, unreadable, unreadable, unreadable};
    ProjectFile file;
    for (unsigned call = 0; call <= faults.size(); ++call) {
        SCOPED_TRACE(call);
        ScopedFailingCalls calls;
        calls.failingStreamCall = call + 1;
        if (call == 0) {
            EXPECT_THROW(file.loadBytes(bytes), std::bad_alloc);
        } else {
            EXPECT_EQ(file.loadBytes(bytes).fault, faults.at(call - 1));
        }
        EXPECT_TRUE(file.isEmpty());
    }
}

}  // namespace
