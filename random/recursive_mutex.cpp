#include "random/recursive_mutex.h"

RecursiveMutex::RecursiveMutex() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

RecursiveMutex::~RecursiveMutex() {
    pthread_mutex_destroy(&mutex_);
}

void RecursiveMutex::lock() {
    pthread_mutex_lock(&mutex_);
}

void RecursiveMutex::unlock() {
    pthread_mutex_unlock(&mutex_);
}
