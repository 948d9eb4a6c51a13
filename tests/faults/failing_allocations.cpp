// Allocations of a whole program, counted and refused by number: listed among the sources of a
// program that is linked statically, with `malloc`, `calloc` and `realloc` directed here by the
// linker. That reaches the C library's and operator new's own calls.
//
// FAIL_ALLOCATION of the environment names the number of the first one that is refused, from 1 on,
// and FAIL_ALLOCATION_LAST that of the last one. Two counts are written to the descriptor
// ALLOCATIONS_DESCRIPTOR, as two numbers of 64 bits, at the refusals and at the normal end: of all
// so far, and of those of the C library's start, before the first constructors.

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

void* systemAllocate(std::size_t size) asm("__real_malloc");
void* replacedAllocate(std::size_t size) asm("__wrap_malloc");
void* systemZeroed(std::size_t count, std::size_t size) asm("__real_calloc");
void* replacedZeroed(std::size_t count, std::size_t size) asm("__wrap_calloc");
void* systemResize(void* block, std::size_t size) asm("__real_realloc");
void* replacedResize(void* block, std::size_t size) asm("__wrap_realloc");

namespace {

struct Limits {
    unsigned long first = 0;
    unsigned long last = 0;
    int descriptor = -1;
};

// Volatile: otherwise clang 19 evaluates noteStart as it compiles, and notes 0.
volatile unsigned long allocations = 0;
unsigned long startAllocations = 0;

unsigned long number(const char* name, unsigned long otherwise) {
    const char* text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtoul(text, nullptr, 10);
}

const Limits& limits() {
    // Not a static with a guard: the first allocations come before most of the library is ready.
    static Limits read;
    static bool isRead = false;
    if (!isRead && environ != nullptr) {
        isRead = true;
        read.first = number("FAIL_ALLOCATION", ~0UL);
        read.last = number("FAIL_ALLOCATION_LAST", ~0UL);
        read.descriptor = static_cast<int>(number("ALLOCATIONS_DESCRIPTOR", 0));
    }
    return read;
}

void reportCount() {
    const std::array<unsigned long, 2> counts{allocations, startAllocations};
    [[maybe_unused]] const ssize_t written =
        ::pwrite(limits().descriptor, counts.data(), sizeof counts, 0);
}

bool refuses() {
    allocations = allocations + 1;
    if (allocations < limits().first || allocations > limits().last) {
        return false;
    }
    reportCount();
    errno = ENOMEM;
    return true;
}

[[gnu::constructor(101)]] void noteStart() {
    startAllocations = allocations;
}

[[gnu::destructor]] void reportAtExit() {
    reportCount();
}

}  // namespace

void* replacedAllocate(std::size_t size) {
    return refuses() ? nullptr : systemAllocate(size);
}

void* replacedZeroed(std::size_t count, std::size_t size) {
    return refuses() ? nullptr : systemZeroed(count, size);
}

void* replacedResize(void* block, std::size_t size) {
    return refuses() ? nullptr : systemResize(block, size);
}
