#pragma once

#include "core/entry.h"

/// While it lives, the core is stopped, as it is until a program starts it. Behind it, the core is
/// started anew, as every test finds it.
class StoppedCore {
public:
    StoppedCore() { coreEntry::coreStop(); }
    ~StoppedCore() { coreEntry::coreStart(); }
    StoppedCore(const StoppedCore&) = delete;
    StoppedCore& operator=(const StoppedCore&) = delete;
};
