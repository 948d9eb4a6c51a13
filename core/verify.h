#pragma once

#ifdef SIGN_VERIFY
#include <cstdio>
#include <cstdlib>
#include <source_location>
#endif

namespace core {

#ifdef SIGN_VERIFY
/// Ends the process, naming the place, when an operation is entered without what its contract
/// demands. Other builds look at nothing.
inline void verify(bool invariant,
                   const std::source_location& place = std::source_location::current()) {
    if (!invariant) {
        std::fprintf(stderr, "%s:%u: %s: called against its contract\n", place.file_name(),
                     place.line(), place.function_name());
        std::abort();
    }
}
#else
inline void verify(bool /*invariant*/) {}
#endif

}  // namespace core
