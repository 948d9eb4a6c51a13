#include "random/recursive_mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace {

using Lock = std::lock_guard<RecursiveMutex>;

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
