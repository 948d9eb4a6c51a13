#pragma once

#ifdef SIGN_VERIFY
#include <cstdio>
#include <cstdlib>
#endif

namespace core {

#ifdef SIGN_VERIFY
/// Ends the process, naming the place of the call, when an operation is entered without what its
/// contract demands. Other builds look at nothing.
inline void verify(bool invariant, const char* file = __builtin_FILE(),
                   int line = __builtin_LINE()) {
    if (!invariant) {
        std::fprintf(stderr, "%s:%d: called against its contract\n", file, line);
        std::abort();
    }
}
#else
inline void verify(bool /*invariant*/) {}
#endif

}  // namespace core
