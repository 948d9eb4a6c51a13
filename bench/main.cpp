#include <benchmark/benchmark.h>

#include "core/entry.h"

int main(int argc, char** argv) {
    coreEntry::coreStart();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    coreEntry::coreStop();
}
