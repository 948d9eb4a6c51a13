// Ends of a process at once, which in a build for coverage would lose what it has run.

#include <unistd.h>

extern "C" int __llvm_profile_write_file() __attribute__((weak));

namespace {

void writeCounts() {
    if (__llvm_profile_write_file != nullptr) {
        __llvm_profile_write_file();
    }
}

}  // namespace

// The linker's names for the library's functions and for what replaces them.
[[noreturn]] void systemExit(int status) asm("__real__exit");
[[noreturn]] void countedExit(int status) asm("__wrap__exit");
[[noreturn]] void systemAbort() asm("__real_abort");
[[noreturn]] void countedAbort() asm("__wrap_abort");

void countedExit(int status) {
    writeCounts();
    systemExit(status);
}

void countedAbort() {
    writeCounts();
    systemAbort();
}
