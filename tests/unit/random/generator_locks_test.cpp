#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "random/random_generator.h"
#include "tests/support/bytes.h"
#include "tests/unit/random/generator_operation.h"

namespace {

/// While it lives, looks at a generator whenever one of its locks is taken or given back.
class LockWatch {
public:
    explicit LockWatch(const RandomGenerator& generator);
    ~LockWatch();
    LockWatch(const LockWatch&) = delete;
    LockWatch& operator=(const LockWatch&) = delete;

    void taken(const pthread_mutex_t* mutex) {
        if (isLock(mutex, generator_.entropyLock)) {
            look();
            EXPECT_TRUE(poolDepth_ != 0 || stateDepth_ == 0) << "the lock of the state came first";
            ++poolDepth_;
        } else if (isLock(mutex, generator_.stateLock)) {
            look();
            ++stateDepth_;
        }
    }

    void givenBack(const pthread_mutex_t* mutex) {
        if (isLock(mutex, generator_.entropyLock)) {
            look();
            --poolDepth_;
        } else if (isLock(mutex, generator_.stateLock)) {
            look();
            --stateDepth_;
        }
    }

private:
    static bool isLock(const void* mutex, const RecursiveMutex& lock) { return mutex == &lock; }

    /// Expects that what has changed since the last look was locked all the time.
    void look() {
        EXPECT_TRUE(pool_ == generator_.entropyPool || poolDepth_ != 0)
            << "the pool was not locked";
        EXPECT_TRUE(state_ == generator_.stateBlock || stateDepth_ != 0)
            << "the state was not locked";
        pool_ = generator_.entropyPool;
        state_ = generator_.stateBlock;
    }

    const RandomGenerator& generator_;
    Bytes pool_ = generator_.entropyPool;
    std::array<std::uint8_t, 64> state_ = generator_.stateBlock;
    unsigned poolDepth_ = 0;   ///< times that `entropyLock` is held
    unsigned stateDepth_ = 0;  ///< times that `stateLock` is held
};

LockWatch* current = nullptr;

LockWatch::LockWatch(const RandomGenerator& generator) : generator_(generator) {
    current = this;
}

LockWatch::~LockWatch() {
    look();
    EXPECT_EQ(poolDepth_ + stateDepth_, 0U);
    current = nullptr;
}

}  // namespace

// The linker's names for the library's functions and for what replaces them.
int systemLock(pthread_mutex_t* mutex) asm("__real_pthread_mutex_lock");
int replacedLock(pthread_mutex_t* mutex) asm("__wrap_pthread_mutex_lock");
int systemUnlock(pthread_mutex_t* mutex) asm("__real_pthread_mutex_unlock");
int replacedUnlock(pthread_mutex_t* mutex) asm("__wrap_pthread_mutex_unlock");

int replacedLock(pthread_mutex_t* mutex) {
    const int result = systemLock(mutex);
    if (current != nullptr) {
        current->taken(mutex);
    }
    return result;
}

int replacedUnlock(pthread_mutex_t* mutex) {
    if (current != nullptr) {
        current->givenBack(mutex);
    }
    return systemUnlock(mutex);
}

namespace {

/// All that change the state, the pool or both.
const std::vector<GeneratorOperation> operations{
    {"next32", [](RandomGenerator& generator) { generator.next32(); }},
    {"seedFromSystem", [](RandomGenerator& generator) { generator.seedFromSystem(); }},
    {"seedFromWord", [](RandomGenerator& generator) { generator.seedFromWord(7); }},
    {"mixPool", [](RandomGenerator& generator) { generator.mixPool(); }},
    {"addEntropyByte", [](RandomGenerator& generator) { generator.addEntropyByte(7); }},
    {"addEntropy", [](RandomGenerator& generator) { generator.addEntropy("bytes", 5); }},
    {"clearState", [](RandomGenerator& generator) { generator.clearState(); }},
};

TEST(RandomGeneratorLocks, AreHeldWhileWhatTheyGuardChangesAndTakenInOneOrder) {
    for (const GeneratorOperation& operation : operations) {
        SCOPED_TRACE(operation.name);
        RandomGenerator generator;
        // So that a pool that is emptied changes.
        generator.addEntropy("waiting", 7);
        const LockWatch watch(generator);
        operation.run(generator);
    }
}

}  // namespace
