#include "fuzz/property.h"

#include <cstdio>
#include <cstdlib>

void require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", property);
        std::abort();
    }
}
