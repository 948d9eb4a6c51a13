#include "tests/unit/random/system_calls.h"

#include <algorithm>
#include <cstdio>

namespace {

ScopedSystemCalls* current = nullptr;

}  // namespace

ScopedSystemCalls::ScopedSystemCalls() {
    current = this;
}

ScopedSystemCalls::~ScopedSystemCalls() {
    current = nullptr;
}

// The linker's names for the system's functions and for what replaces them.
std::FILE* systemOpen(const char* path, const char* mode) asm("__real_fopen");
std::FILE* replacedOpen(const char* path, const char* mode) asm("__wrap_fopen");
std::size_t systemRead(void* buffer, std::size_t size, std::size_t count,
                       std::FILE* stream) asm("__real_fread");
std::size_t replacedRead(void* buffer, std::size_t size, std::size_t count,
                         std::FILE* stream) asm("__wrap_fread");
int systemStatus(const char* path, struct stat* status) asm("__real_stat");
int replacedStatus(const char* path, struct stat* status) asm("__wrap_stat");
int systemOpenStatus(int descriptor, struct stat* status) asm("__real_fstat");
int replacedOpenStatus(int descriptor, struct stat* status) asm("__wrap_fstat");
std::time_t systemTime(std::time_t* result) asm("__real_time");
std::time_t replacedTime(std::time_t* result) asm("__wrap_time");

std::FILE* replacedOpen(const char* path, const char* mode) {
    if (current == nullptr) {
        return systemOpen(path, mode);
    }
    current->opened.push_back(std::string(path) + " " + mode);
    if (current->files.empty()) {
        return nullptr;
    }
    const std::string file = current->files.front();
    current->files.pop_front();
    return file.empty() ? nullptr : systemOpen(file.c_str(), mode);
}

std::size_t replacedRead(void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    if (current != nullptr && current->readable.has_value()) {
        count = std::min(count, *current->readable / size);
        *current->readable -= count * size;
    }
    return systemRead(buffer, size, count, stream);
}

int replacedStatus(const char* path, struct stat* status) {
    if (current == nullptr || !current->status.contains(path)) {
        return systemStatus(path, status);
    }
    *status = current->status.at(path);
    return 0;
}

int replacedOpenStatus(int descriptor, struct stat* status) {
    if (current == nullptr || !current->openStatus.has_value()) {
        return systemOpenStatus(descriptor, status);
    }
    *status = *current->openStatus;
    return 0;
}

std::time_t replacedTime(std::time_t* result) {
    if (current == nullptr || !current->now.has_value()) {
        return systemTime(result);
    }
    if (result != nullptr) {
        *result = *current->now;
    }
    return *current->now;
}
