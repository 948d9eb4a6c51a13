#pragma once

#include <functional>
#include <string>
#include <string_view>

/// While it lives, standard input gives these bytes and then ends.
struct ScopedInput {
    explicit ScopedInput(std::string_view bytes);
    ScopedInput(const ScopedInput&) = delete;
    ScopedInput& operator=(const ScopedInput&) = delete;
    ~ScopedInput();

    /// Bytes that have not been taken from standard input.
    std::size_t left() const;

private:
    int saved;
    std::size_t size;
};

/// While it lives, this standard descriptor is closed, and the next file that is opened gets its
/// number if no lower one is free.
struct ScopedClosedDescriptor {
    explicit ScopedClosedDescriptor(int standard);
    ScopedClosedDescriptor(const ScopedClosedDescriptor&) = delete;
    ScopedClosedDescriptor& operator=(const ScopedClosedDescriptor&) = delete;
    ~ScopedClosedDescriptor();

private:
    int closed;
    int saved;
};

/// The bytes that `action` writes to standard output, which shows none of them.
std::string capturedOutput(const std::function<void()>& action);

/// A file without a name, open for reading and writing at its start, that holds these bytes.
int anonymousFile(std::string_view bytes);

/// All that stands in the file of this descriptor, from its start.
std::string fileContent(int descriptor);
