#include <cstdlib>
#include <new>

#include "core/host.h"

namespace core {

void* hostAlloc(std::uint32_t size) {
    void* block = std::calloc(size, 1);
    if (block == nullptr && size != 0) {
        throw std::bad_alloc();
    }
    return block;
}

void hostFree(void* block) {
    std::free(block);
}

}  // namespace core
