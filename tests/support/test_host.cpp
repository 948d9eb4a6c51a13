#include "tests/support/test_host.h"

#include <cstdlib>
#include <deque>
#include <new>

#include "core/host.h"
#include "tests/support/random_operands.h"

namespace {

std::int64_t liveBlocks = 0;
std::uint64_t allocations = 0;
std::uint32_t lastSize = 0;
std::deque<std::uint8_t> recordedBytes;

}  // namespace

std::int64_t testHostLiveBlocks() {
    return liveBlocks;
}

std::uint64_t testHostAllocations() {
    return allocations;
}

std::uint32_t testHostLastSize() {
    return lastSize;
}

void testHostPlayRandom(const std::vector<std::uint8_t>& bytes) {
    recordedBytes.insert(recordedBytes.end(), bytes.begin(), bytes.end());
}

std::size_t testHostRandomLeft() {
    return recordedBytes.size();
}

namespace core {

void* hostAlloc(std::uint32_t size) {
    void* block = std::calloc(size, 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++liveBlocks;
    ++allocations;
    lastSize = size;
    return block;
}

void hostFree(void* block) {
    if (block != nullptr) {
        --liveBlocks;
    }
    std::free(block);
}

void hostRandomBytes(void* buffer, std::uint32_t length) {
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    for (std::uint32_t i = 0; i < length; ++i) {
        if (recordedBytes.empty()) {
            bytes[i] = static_cast<std::uint8_t>(testRandom()());
        } else {
            bytes[i] = recordedBytes.front();
            recordedBytes.pop_front();
        }
    }
}

}  // namespace core
