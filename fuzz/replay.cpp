// The main of a fuzz target without a fuzzer: runs it over every file of a corpus.
//
//   TARGET FOLDER     exits 0 when the folder holds inputs and every property held for each

#include <cstdio>
#include <filesystem>
#include <vector>

#include "fuzz/property.h"
#include "tests/support/temporary_folder.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        const std::vector<std::uint8_t> input = fileBytes(entry.path());
        // In front of a failure's message stands the file that it came from.
        std::fprintf(stderr, "%s\n", entry.path().c_str());
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++count;
    }
    if (count == 0) {
        std::fprintf(stderr, "%s holds no input\n", arguments[1]);
        return 1;
    }
    std::printf("%zu inputs\n", count);
    return 0;
}
