#pragma once

#include <pthread.h>

/// Recursive mutex of the POSIX threads interface, for use with std::lock_guard.
class RecursiveMutex {
public:
    RecursiveMutex();
    ~RecursiveMutex();
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    void lock();
    void unlock();

private:
    pthread_mutex_t mutex_;
};
