// Ends of a process at once, which in a build for coverage would lose what it has run.

#include <unistd.h>

// The linker's names: of what only a build for coverage has, of the library's functions, and of
// what replaces them.
[[gnu::weak]] int writeProfile() asm("__llvm_profile_write_file");
[[noreturn]] void systemExit(int status) asm("__real__exit");
[[noreturn]] void countedExit(int status) asm("__wrap__exit");
[[noreturn]] void systemAbort() asm("__real_abort");
[[noreturn]] void countedAbort() asm("__wrap_abort");

namespace {

void writeCounts() {
    if (writeProfile != nullptr) {
        writeProfile();
    }
}

}  // namespace

void countedExit(int status) {
    writeCounts();
    systemExit(status);
}

void countedAbort() {
    writeCounts();
    systemAbort();
}
