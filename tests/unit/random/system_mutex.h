#pragma once

#include <pthread.h>

#include <thread>
#include <type_traits>

#include "random/recursive_mutex.h"

/// The mutex of the system that stands at the place of this one, as a test of its own finds.
inline pthread_mutex_t* systemMutex(RecursiveMutex& mutex) {
    static_assert(std::is_standard_layout_v<RecursiveMutex>);
    return reinterpret_cast<pthread_mutex_t*>(&mutex);
}

/// Whether another thread could take the mutex now.
inline bool isFree(RecursiveMutex& mutex) {
    bool taken = false;
    std::thread([&] {
        taken = pthread_mutex_trylock(systemMutex(mutex)) == 0;
        if (taken) {
            pthread_mutex_unlock(systemMutex(mutex));
        }
    }).join();
    return taken;
}
