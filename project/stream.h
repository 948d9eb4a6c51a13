#pragma once

#include <cstdio>
#include <memory>

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

/// A stream that is closed with its owner.
using Stream = std::unique_ptr<std::FILE, CloseStream>;
