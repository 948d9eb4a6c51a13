#include <cstdio>
#include <new>

#include "project/project_file.h"
#include "project/stream.h"

ProjectLoading ProjectFile::loadBytes(std::span<const std::uint8_t> bytes) {
    if (!isEmpty()) {
        clear();
    }
    // A stream for reading alone writes nothing. Opening it fails for want of memory alone.
    const Stream stream(::fmemopen(const_cast<std::uint8_t*>(bytes.data()), bytes.size(), "rb"));
    if (stream == nullptr) {
        throw std::bad_alloc();
    }
    ProjectLoading loading;
    loading.fault = loadStream(stream.get(), loading);
    return loading;
}
