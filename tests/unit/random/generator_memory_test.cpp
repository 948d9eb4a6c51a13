#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "core/host.h"
#include "random/random_generator.h"
#include "tests/support/bytes.h"
#include "tests/support/generator_model.h"
#include "tests/support/open_files.h"
#include "tests/unit/random/generator_operation.h"
#include "tests/unit/random/system_mutex.h"

namespace {

/// What became of the blocks and mutexes that a run asked for or gave back.
struct Outcome {
    bool ranOut = false;
    unsigned asked = 0;                             ///< blocks, refused ones too
    int live = 0;                                   ///< of operator new, less those given back
    std::vector<const pthread_mutex_t*> destroyed;  ///< the mutexes
};

/// While it lives, counts blocks and mutexes, and refuses the blocks behind the first `given`.
class ScopedBlocks {
public:
    ScopedBlocks(Outcome& outcome, unsigned given);
    ~ScopedBlocks();
    ScopedBlocks(const ScopedBlocks&) = delete;
    ScopedBlocks& operator=(const ScopedBlocks&) = delete;

    /// Counts a block that is asked for and tells whether it is refused.
    bool refuses() { return ++outcome.asked > given_; }

    Outcome& outcome;

private:
    unsigned given_;
};

constexpr unsigned all = std::numeric_limits<unsigned>::max();

ScopedBlocks* currentBlocks = nullptr;

ScopedBlocks::ScopedBlocks(Outcome& outcome, unsigned given) : outcome(outcome), given_(given) {
    // Both of a generator, so that noting them takes no block.
    outcome.destroyed.reserve(2);
    currentBlocks = this;
}

ScopedBlocks::~ScopedBlocks() {
    currentBlocks = nullptr;
}

void countGivenBack(const void* block) {
    if (currentBlocks != nullptr && block != nullptr) {
        --currentBlocks->outcome.live;
    }
}

}  // namespace

// The linker's names for the library's functions and for what replaces them.
void* systemNew(std::size_t size) asm("__real__Znwm");
void* replacedNew(std::size_t size) asm("__wrap__Znwm");
void systemDelete(void* block) asm("__real__ZdlPv");
void replacedDelete(void* block) asm("__wrap__ZdlPv");
void systemSizedDelete(void* block, std::size_t size) asm("__real__ZdlPvm");
void replacedSizedDelete(void* block, std::size_t size) asm("__wrap__ZdlPvm");
void* systemBlock(std::size_t size) asm("__real_malloc");
void* replacedBlock(std::size_t size) asm("__wrap_malloc");
void* systemZeroed(std::size_t count, std::size_t size) asm("__real_calloc");
void* replacedZeroed(std::size_t count, std::size_t size) asm("__wrap_calloc");
int systemDestroy(pthread_mutex_t* mutex) asm("__real_pthread_mutex_destroy");
int replacedDestroy(pthread_mutex_t* mutex) asm("__wrap_pthread_mutex_destroy");

void* replacedNew(std::size_t size) {
    if (currentBlocks != nullptr) {
        if (currentBlocks->refuses()) {
            throw std::bad_alloc();
        }
        ++currentBlocks->outcome.live;
    }
    return systemNew(size);
}

void replacedDelete(void* block) {
    countGivenBack(block);
    systemDelete(block);
}

void replacedSizedDelete(void* block, std::size_t size) {
    countGivenBack(block);
    systemSizedDelete(block, size);
}

void* replacedBlock(std::size_t size) {
    return currentBlocks != nullptr && currentBlocks->refuses() ? nullptr : systemBlock(size);
}

void* replacedZeroed(std::size_t count, std::size_t size) {
    return currentBlocks != nullptr && currentBlocks->refuses() ? nullptr
                                                                : systemZeroed(count, size);
}

int replacedDestroy(pthread_mutex_t* mutex) {
    if (currentBlocks != nullptr) {
        currentBlocks->outcome.destroyed.push_back(mutex);
    }
    return systemDestroy(mutex);
}

namespace {

/// Runs it with no more than so many blocks.
Outcome runWith(unsigned given, const std::function<void()>& run) {
    Outcome outcome;
    const ScopedBlocks blocks(outcome, given);
    try {
        run();
    } catch (const std::bad_alloc&) {
        outcome.ranOut = true;
    }
    return outcome;
}

TEST(RandomGeneratorMemory, RunsOutWithTheLocksReleasedAndTheGeneratorInOrder) {
    const Bytes data(100);
    const std::vector<GeneratorOperation> operations{
        {"addEntropyByte", [](RandomGenerator& generator) { generator.addEntropyByte(7); }},
        {"addEntropy",
         [&](RandomGenerator& generator) { generator.addEntropy(data.data(), data.size()); }},
        {"seedFromSystem", [](RandomGenerator& generator) { generator.seedFromSystem(); }},
    };
    for (const GeneratorOperation& operation : operations) {
        unsigned given = 0;
        for (bool ranOut = true; ranOut; ++given) {
            SCOPED_TRACE(operation.name + std::string(" with blocks: ") + std::to_string(given));
            RandomGenerator generator;
            Bytes().swap(generator.entropyPool);
            const std::ptrdiff_t before = openFiles();
            ranOut = runWith(given, [&] { operation.run(generator); }).ranOut;
            EXPECT_TRUE(ranOut || given > 0);
            EXPECT_TRUE(isFree(generator.entropyLock));
            EXPECT_TRUE(isFree(generator.stateLock));
            EXPECT_EQ(openFiles(), before);
            generator.addEntropy(data.data(), data.size());
            generator.seedFromWord(9);
            EXPECT_EQ(generator.next32(), GeneratorModel(9).next());
        }
    }
}

TEST(RandomGeneratorMemory, RunsOutInAConstructionThatIsTornDown) {
    alignas(RandomGenerator) std::array<std::byte, sizeof(RandomGenerator)> room;
    auto* const place = reinterpret_cast<RandomGenerator*>(room.data());
    const std::vector<const pthread_mutex_t*> bothLocks{systemMutex(place->stateLock),
                                                        systemMutex(place->entropyLock)};
    unsigned given = 0;
    for (bool ranOut = true; ranOut; ++given) {
        const Outcome outcome =
            runWith(given, [&] { std::destroy_at(new (place) RandomGenerator); });
        ranOut = outcome.ranOut;
        EXPECT_TRUE(ranOut || given > 0);
        EXPECT_EQ(outcome.live, 0) << given;
        EXPECT_EQ(outcome.destroyed, bothLocks) << given;
    }
}

/// Ends the process: with 0 if its generator, for which there is no memory at first, is made and
/// seeded later.
[[noreturn]] void useInstanceWithoutMemory() {
    const auto use = [] { RandomGenerator::instance(); };
    // The first block is for the generator itself.
    const bool ranOut = runWith(0, use).ranOut && runWith(1, use).ranOut;
    const decltype(RandomGenerator::stateBlock) unseeded{};
    std::_Exit(ranOut && RandomGenerator::instance().stateBlock != unseeded ? 0 : 1);
}

TEST(RandomGeneratorMemory, RunsOutAtTheFirstUseWhichTheNextMakesUpFor) {
    // A process of its own, in which nothing has used the generator.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(useInstanceWithoutMemory(), testing::ExitedWithCode(0), "");
}

TEST(RandomGeneratorMemory, IsNotTakenAfterSeeding) {
    Bytes bytes(4099);
    const std::vector<GeneratorOperation> operations{
        {"fillBytes",
         [&](RandomGenerator& generator) { generator.fillBytes(bytes.data(), bytes.size()); }},
        {"next32", [](RandomGenerator& generator) { generator.next32(); }},
        {"next64", [](RandomGenerator& generator) { generator.next64(); }},
        {"next32Below", [](RandomGenerator& generator) { generator.next32Below(1000); }},
        {"next64Below", [](RandomGenerator& generator) { generator.next64Below(1000); }},
        {"hostRandomBytes",
         [&](RandomGenerator&) {
             core::hostRandomBytes(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
         }},
    };
    RandomGenerator::instance();
    for (const GeneratorOperation& operation : operations) {
        RandomGenerator generator;
        EXPECT_EQ(runWith(all, [&] { operation.run(generator); }).asked, 0U) << operation.name;
    }
}

}  // namespace
