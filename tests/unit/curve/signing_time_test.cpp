// What signing shows of a nonce to a clock: nothing.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ctime>
#include <string>
#include <vector>

#include "curve/fast/processor.h"
#include "curve/signature_primitive.h"
#include "tests/support/curve_keys.h"
#include "tests/support/long_run.h"
#include "tests/support/program_run.h"
#include "tests/support/random_operands.h"
#include "tests/support/test_host.h"
#include "tests/unit/curve/chosen_route.h"

namespace {

/// Mean and variance of a growing sample (B. P. Welford, 1962).
class Sample {
public:
    void add(double value) {
        count_ += 1;
        const double distance = value - mean_;
        mean_ += distance / count_;
        squares_ += distance * (value - mean_);
    }
    double mean() const { return mean_; }
    /// The variance of the mean.
    double error() const { return squares_ / (count_ - 1) / count_; }

private:
    double count_ = 0;
    double mean_ = 0;
    double squares_ = 0;
};

double welchT(const Sample& a, const Sample& b) {
    return (a.mean() - b.mean()) / std::sqrt(a.error() + b.error());
}

/// Nanoseconds of this thread's processor time, of which other processes take nothing.
double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
}

struct TimedSignature {
    bool isShort;
    double nanoseconds;
};

/// Welch's t of the times of signatures by nonces of 162 bits and of 130, in random order. The
/// slowest twentieth, in which the system does something else, does not count.
double timeOfNonceLengths(int signatures) {
    const KeyRecords key(randomProjectKey());
    const Bytes digest = randomBytes(20);
    std::vector<TimedSignature> times;
    for (int i = 0; i < signatures; ++i) {
        const bool isShort = randomBelow(2) == 0;
        Bytes draw = randomBytes(24);
        // A draw gives the nonce in its low 160 bits, and three more in the highest of the last 32.
        std::fill(draw.begin() + 20, draw.end(), std::uint8_t{0});
        draw[23] = isShort ? 0 : 0x40;
        if (isShort) {
            std::fill(draw.begin() + 16, draw.begin() + 20, std::uint8_t{0});
            draw[16] = 0x02;
        }
        testHostPlayRandom(draw);
        core::CoreInteger r = signatureHalf();
        core::CoreInteger s = signatureHalf();
        const double start = processorTime();
        core::curveSignDigest(key.domain(), key.scalar(), digest.data(), {.r = r, .s = s});
        const double end = processorTime();
        times.push_back({isShort, end - start});
    }
    std::vector<double> sorted;
    for (const TimedSignature& time : times) {
        sorted.push_back(time.nanoseconds);
    }
    const auto limit = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 20 * 19);
    std::nth_element(sorted.begin(), limit, sorted.end());
    Sample shortNonces;
    Sample longNonces;
    for (const TimedSignature& time : times) {
        if (time.nanoseconds < *limit) {
            (time.isShort ? shortNonces : longNonces).add(time.nanoseconds);
        }
    }
    return welchT(longNonces, shortNonces);
}

/// Beyond this, two means differ (leakage assessment by t-test, ISO/IEC 17825).
constexpr double largestT = 4.5;

TEST(SigningTime, TellsNothingOfTheLengthOfTheNonce) {
    const double t = timeOfNonceLengths(roundsOf(20000, 1000000));
    RecordProperty("t", std::to_string(t));
    EXPECT_LT(std::abs(t), largestT);
}

TEST(SigningTime, TellsTheLengthOfTheNonceOnTheDefiningRoute) {
    const ChosenRoute defining(nullptr);
    const double t = timeOfNonceLengths(2000);
    RecordProperty("t", std::to_string(t));
    EXPECT_GT(t, largestT);
}

}  // namespace
