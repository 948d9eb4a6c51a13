#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "curve/field_element.h"

#if defined(__SANITIZE_ADDRESS__)
#define SIGN_GUARD_POISONS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SIGN_GUARD_POISONS
#endif
#endif

#ifdef SIGN_GUARD_POISONS
#include <sanitizer/asan_interface.h>
#endif

/// While it lives, the words of an element above its capacity are out of bounds: they hold a
/// pattern that must still stand at the end, and AddressSanitizer reports who touches them. The
/// element must not be copied as a whole meanwhile.
class CapacityGuard {
public:
    explicit CapacityGuard(core::FieldElement& e)
        : begin_(e.words.begin() + e.capacity / sizeof(std::uint64_t)), end_(e.words.end()) {
        std::fill(begin_, end_, pattern);
#ifdef SIGN_GUARD_POISONS
        __asan_poison_memory_region(begin_, bytes());
#endif
    }
    ~CapacityGuard() {
#ifdef SIGN_GUARD_POISONS
        __asan_unpoison_memory_region(begin_, bytes());
#endif
        EXPECT_EQ(std::count(begin_, end_, pattern), end_ - begin_)
            << "words above the capacity have changed";
    }
    CapacityGuard(const CapacityGuard&) = delete;
    CapacityGuard& operator=(const CapacityGuard&) = delete;

private:
    static constexpr std::uint64_t pattern = 0xA5C3A5C3A5C3A5C3;

    std::size_t bytes() const {
        return static_cast<std::size_t>(end_ - begin_) * sizeof(std::uint64_t);
    }

    std::uint64_t* begin_;
    std::uint64_t* end_;
};
