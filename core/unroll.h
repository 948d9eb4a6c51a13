#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace core {

/// Calls `step` with 0 to count - 1, each as a constant of compile time, so that what a step looks
/// up in tables is found by the compiler, and values that it passes on change names instead of
/// places. `step` is a lambda that is always inlined: left to themselves, compilers call it.
template <std::size_t count, typename Step>
__attribute__((always_inline)) inline void unroll(const Step& step) {
    [&]<std::size_t... i>(std::index_sequence<i...>) __attribute__((always_inline)) {
        (step(std::integral_constant<std::size_t, i>{}), ...);
    }
    (std::make_index_sequence<count>{});
}

}  // namespace core
