#include "random/recursive_mutex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <mutex>
#include <span>
#include <thread>

namespace {

using Lock = std::lock_guard<RecursiveMutex>;

/// Leaves no zero where the next function called keeps its values.
[[gnu::noinline]] void soilStack() {
    std::array<volatile unsigned char, 4096> room;
    for (volatile unsigned char& byte : room) {
        byte = 0xFF;
    }
}

TEST(RecursiveMutex, IsThePlainRecursiveMutexOfTheSystem) {
    const pthread_mutex_t plain = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    soilStack();
    const RecursiveMutex mutex;
    static_assert(sizeof mutex == sizeof plain);
    EXPECT_TRUE(std::ranges::equal(std::as_bytes(std::span(&mutex, 1)),
                                   std::as_bytes(std::span(&plain, 1))));
}

TEST(RecursiveMutex, IsTakenTwiceByOneThreadAndKeptUntilBothAreGivenBack) {
    RecursiveMutex mutex;
    std::atomic<bool> entered = false;
    mutex.lock();
    mutex.lock();
    std::thread other([&] {
        const Lock lock(mutex);
        entered = true;
    });
    mutex.unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(entered);
    mutex.unlock();
    other.join();
    EXPECT_TRUE(entered);
}

}  // namespace
