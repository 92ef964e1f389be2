#pragma once

#include <pthread.h>

namespace Morvane::ProcessBridge {

/// A `pthread_mutex_t` with default attributes that is destroyed with its owner. Taken with std::lock_guard.
class Mutex {
public:
    Mutex() { pthread_mutex_init(&mutex, nullptr); }
    ~Mutex() { pthread_mutex_destroy(&mutex); }

    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() { pthread_mutex_lock(&mutex); }
    void unlock() { pthread_mutex_unlock(&mutex); }

private:
    pthread_mutex_t mutex;
};

}  // namespace Morvane::ProcessBridge
