#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

using RandomDevice = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Opens the device that seeding reads: /dev/urandom, or /dev/random when that cannot be opened;
/// null without either. Of a FIFO in the place of one it waits for a writer.
RandomDevice openRandomDevice();

/// What keeps a seed from being secret.
enum class RandomDeviceFault : std::uint8_t {
    none,
    missing,     ///< neither device can be opened: the clock alone would be the seed
    fifo,        ///< a FIFO stands in its place: opening it would wait for a writer
    foreign,     ///< it is not the kernel's generator, character device 1:8 or 1:9 (random(4))
    unreadable,  ///< it gives less than a seed takes: known bytes would stand in
};

/// Judges the device that `openRandomDevice` opens, and opens no FIFO. Seeding asks for no such
/// judgement and goes on with what it finds; this is for whoever refuses first.
RandomDeviceFault randomDeviceFault();
