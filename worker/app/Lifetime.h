#pragma once

#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/ProcessWatch.h"

namespace Morvane::Worker {

/// Leaves the worker's end to SIGTERM and to the host's death: blocks the one in the calling thread, and so
/// in every thread started later, whatever the host had set for it, and ignores the signals that a terminal
/// sends to the host's whole process group. First thing of the program, while it has one thread.
void prepareSignals();

/// Decides when the worker ends: on SIGTERM, or when its host has died, however that came about. Then it
/// calls `end` once, on a thread of its own, and lets the worker finish what it is doing; a worker that has
/// not finished by itself after the grace period is ended on the spot.
class Lifetime {
public:
    /// Watches from now on. `end` must make the request loop return; `removeNames` is called, on any thread,
    /// only when the grace period after the host's death has passed. Throws std::system_error where the host
    /// is dead already or no thread can be had.
    Lifetime(pid_t host, std::function<void()> end, std::function<void()> removeNames);

    /// The worker has finished by itself.
    ~Lifetime();
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;

    /// Whether the host is dead, so that its shared objects are the worker's to remove.
    bool hostDied() const { return watch.isDead(); }

private:
    void waitForSignal();
    void endSignalThread();
    void waitForHost();
    void enforceGrace();

    Platform::ProcessWatch watch;
    const std::function<void()> end;
    const std::function<void()> removeNames;
    std::mutex mutex;
    std::condition_variable changed;
    bool finished = false;
    std::thread signalThread;
    std::thread hostThread;
};

}  // namespace Morvane::Worker
