// Loaded into host and worker before everything else (LD_PRELOAD): each waits for CORVEL_PACE milliseconds
// before it posts a semaphore, so that every request takes its time, first written and then being answered.

#include <dlfcn.h>
#include <semaphore.h>

#include <chrono>
#include <cstdlib>
#include <thread>

extern "C" __attribute__((visibility("default"))) int sem_post(sem_t* semaphore) noexcept {
    static const auto original = reinterpret_cast<int (*)(sem_t*)>(dlsym(RTLD_NEXT, "sem_post"));
    static const char* const pace = std::getenv("CORVEL_PACE");
    if (pace != nullptr)
        std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(pace)));
    return original(semaphore);
}
