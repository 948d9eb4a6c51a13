#include "tests/support/failing_calls.h"

#include <sys/stat.h>

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
    current->requestedBytes += size;
    if (size <= current->blockLimit) {
        return false;
    }
    if (current->givenBlocks == 0) {
        return true;
    }
    --current->givenBlocks;
    return false;
}

/// Counts a call on a stream and tells whether it is to fail.
bool failsOnStream() {
    return current != nullptr && ++current->streamCalls == current->failingStreamCall;
}

}  // namespace

ScopedFailingCalls::ScopedFailingCalls() {
    current = this;
}

ScopedFailingCalls::~ScopedFailingCalls() {
    current = nullptr;
}

// The linker's names for the library's functions and for what replaces them.
std::FILE* systemFdopen(int descriptor, const char* mode) asm("__real_fdopen");
std::FILE* replacedFdopen(int descriptor, const char* mode) asm("__wrap_fdopen");
std::FILE* systemFopen(const char* path, const char* mode) asm("__real_fopen");
std::FILE* replacedFopen(const char* path, const char* mode) asm("__wrap_fopen");
std::FILE* systemFmemopen(void* bytes, std::size_t size, const char* mode) asm("__real_fmemopen");
std::FILE* replacedFmemopen(void* bytes, std::size_t size, const char* mode) asm("__wrap_fmemopen");
int systemSeek(std::FILE* stream, long offset, int whence) asm("__real_fseek");
int replacedSeek(std::FILE* stream, long offset, int whence) asm("__wrap_fseek");
long systemTell(std::FILE* stream) asm("__real_ftell");
long replacedTell(std::FILE* stream) asm("__wrap_ftell");
int systemStatus(int descriptor, struct stat* status) asm("__real_fstat");
int replacedStatus(int descriptor, struct stat* status) asm("__wrap_fstat");
std::size_t systemRead(void* data, std::size_t size, std::size_t count,
                       std::FILE* stream) asm("__real_fread");
std::size_t replacedRead(void* data, std::size_t size, std::size_t count,
                         std::FILE* stream) asm("__wrap_fread");
std::size_t systemWrite(const void* data, std::size_t size, std::size_t count,
                        std::FILE* stream) asm("__real_fwrite");
std::size_t replacedWrite(const void* data, std::size_t size, std::size_t count,
                          std::FILE* stream) asm("__wrap_fwrite");
void* systemNew(std::size_t size) asm("__real__Znwm");
void* replacedNew(std::size_t size) asm("__wrap__Znwm");
void* systemZeroed(std::size_t count, std::size_t size) asm("__real_calloc");
void* replacedZeroed(std::size_t count, std::size_t size) asm("__wrap_calloc");

std::FILE* replacedFdopen(int descriptor, const char* mode) {
    return failsOnStream() ? nullptr : systemFdopen(descriptor, mode);
}

std::FILE* replacedFopen(const char* path, const char* mode) {
    if (failsOnStream()) {
        return nullptr;
    }
    const bool isOther = current != nullptr && current->openedInstead.contains(path);
    return systemFopen(isOther ? current->openedInstead.at(path).c_str() : path, mode);
}

std::FILE* replacedFmemopen(void* bytes, std::size_t size, const char* mode) {
    return failsOnStream() ? nullptr : systemFmemopen(bytes, size, mode);
}

int replacedSeek(std::FILE* stream, long offset, int whence) {
    return failsOnStream() ? -1 : systemSeek(stream, offset, whence);
}

long replacedTell(std::FILE* stream) {
    return failsOnStream() ? -1 : systemTell(stream);
}

int replacedStatus(int descriptor, struct stat* status) {
    if (current == nullptr) {
        return systemStatus(descriptor, status);
    }
    const unsigned number = ++current->statusCalls;
    if (current->beforeStatus) {
        current->beforeStatus(number);
    }
    const int result = systemStatus(descriptor, status);
    if (current->afterStatus) {
        current->afterStatus(number);
    }
    return result;
}

std::size_t replacedRead(void* data, std::size_t size, std::size_t count, std::FILE* stream) {
    return failsOnStream() ? 0 : systemRead(data, size, count, stream);
}

std::size_t replacedWrite(const void* data, std::size_t size, std::size_t count,
                          std::FILE* stream) {
    return failsOnStream() ? 0 : systemWrite(data, size, count, stream);
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
