#include "random/recursive_mutex.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <fstream>
#include <span>
#include <string>
#include <thread>

#include "tests/unit/random/system_mutex.h"

namespace {

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

/// Whether this thread of the process waits in the system for the mutex, by the number and the
/// first argument of its system call.
bool isWaiting(pid_t thread, const RecursiveMutex& mutex) {
    std::ifstream call("/proc/self/task/" + std::to_string(thread) + "/syscall");
    std::string number;
    std::uintptr_t argument = 0;
    call >> number >> std::hex >> argument;
    return number == std::to_string(SYS_futex) &&
           argument == reinterpret_cast<std::uintptr_t>(&mutex);
}

TEST(RecursiveMutex, IsTakenTwiceByOneThreadAndKeptUntilBothAreGivenBack) {
    RecursiveMutex mutex;
    EXPECT_TRUE(isFree(mutex));
    mutex.lock();
    EXPECT_FALSE(isFree(mutex));
    mutex.lock();
    mutex.unlock();
    EXPECT_FALSE(isFree(mutex));
    mutex.unlock();
    EXPECT_TRUE(isFree(mutex));
}

TEST(RecursiveMutex, LetsAnotherThreadWait) {
    ASSERT_TRUE(std::ifstream("/proc/self/task/" + std::to_string(::gettid()) + "/syscall"));
    RecursiveMutex mutex;
    std::atomic<pid_t> other = 0;
    std::atomic<bool> entered = false;
    pthread_mutex_lock(systemMutex(mutex));
    std::thread thread([&] {
        other = ::gettid();
        mutex.lock();
        entered = true;
        mutex.unlock();
    });
    // One of the two happens.
    while (!entered && !isWaiting(other, mutex)) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(entered);
    pthread_mutex_unlock(systemMutex(mutex));
    thread.join();
    EXPECT_TRUE(entered);
}

}  // namespace
