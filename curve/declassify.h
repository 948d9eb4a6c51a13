#pragma once

#include <cstddef>

namespace core {

/// Says that these bytes, though computed from a nonce or a private scalar, are public from here
/// on: signing may branch on them.
///
/// It does nothing. The linker resolves it, so that a test that watches the secrets can put its own
/// in its place.
void declassify(const void* data, std::size_t size);

}  // namespace core
