#include "tests/support/failing_calls.h"

#include <algorithm>
#include <cstdio>
#include <new>

namespace {

ScopedFailingCalls* current = nullptr;

/// Notes a request and tells whether it is to be refused.
bool refuses(std::size_t size) {
    if (current == nullptr) {
        return false;
    }
    current->largestRequest = std::max(current->largestRequest, size);
    return size > current->blockLimit;
}

}  // namespace

ScopedFailingCalls::ScopedFailingCalls() {
    current = this;
}

ScopedFailingCalls::~ScopedFailingCalls() {
    current = nullptr;
}

// The linker's names for the library's functions and for what replaces them.
std::size_t systemWrite(const void* data, std::size_t size, std::size_t count,
                        std::FILE* stream) asm("__real_fwrite");
std::size_t replacedWrite(const void* data, std::size_t size, std::size_t count,
                          std::FILE* stream) asm("__wrap_fwrite");
void* systemNew(std::size_t size) asm("__real__Znwm");
void* replacedNew(std::size_t size) asm("__wrap__Znwm");
void* systemZeroed(std::size_t count, std::size_t size) asm("__real_calloc");
void* replacedZeroed(std::size_t count, std::size_t size) asm("__wrap_calloc");

std::size_t replacedWrite(const void* data, std::size_t size, std::size_t count,
                          std::FILE* stream) {
    const bool fails = current != nullptr && current->failWrites;
    return fails ? 0 : systemWrite(data, size, count, stream);
}

void* replacedNew(std::size_t size) {
    if (refuses(size)) {
        throw std::bad_alloc();
    }
    return systemNew(size);
}

void* replacedZeroed(std::size_t count, std::size_t size) {
    return refuses(count * size) ? nullptr : systemZeroed(count, size);
}
