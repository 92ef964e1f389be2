#include "worker/app/Lifetime.h"

#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

namespace Morvane::Worker {

namespace {

using namespace std::chrono_literals;

/// The worker is gone within a second of its host's death, so the rest of that second is for finishing.
constexpr auto graceAfterHostsDeath = 700ms;
/// The host that sent SIGTERM waits for us, and decides itself when its patience ends.
constexpr auto graceAfterSignal = 10s;

sigset_t endSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    return set;
}

}  // namespace

void prepareSignals() {
    // Ctrl-C in a terminal reaches host and worker alike; the host finishes its movie with our help. A limit
    // on the size of files is a failure of the write that meets it.
    for (const int ignored : {SIGINT, SIGQUIT, SIGHUP, SIGPIPE, SIGXFSZ})
        signal(ignored, SIG_IGN);
    signal(SIGTERM, SIG_DFL);
    const sigset_t set = endSignals();
    pthread_sigmask(SIG_SETMASK, &set, nullptr);
}

Lifetime::Lifetime(pid_t host, std::function<void()> endLoop, std::function<void()> removeSharedObjects)
    : watch(host), end(std::move(endLoop)), removeNames(std::move(removeSharedObjects)) {
    signalThread = std::thread([this] { waitForSignal(); });
    try {
        hostThread = std::thread([this] { waitForHost(); });
    } catch (...) {
        endSignalThread();
        throw;
    }
}

Lifetime::~Lifetime() {
    endSignalThread();
    watch.cancel();
    hostThread.join();
}

void Lifetime::endSignalThread() {
    {
        const std::lock_guard lock(mutex);
        finished = true;
    }
    changed.notify_all();
    // Every thread blocks the signal; that one takes it with sigwait.
    // NOLINTNEXTLINE(bugprone-bad-signal-to-kill-thread)
    pthread_kill(signalThread.native_handle(), SIGTERM);
    signalThread.join();
}

void Lifetime::waitForHost() {
    if (watch.wait() != Platform::ProcessWatch::Outcome::Died)
        return;
    // The same way out as when the host asks for it.
    kill(getpid(), SIGTERM);
    const std::lock_guard lock(mutex);
    changed.notify_all();
}

void Lifetime::waitForSignal() {
    const sigset_t set = endSignals();
    int received = 0;
    while (sigwait(&set, &received) != 0) {
    }
    {
        const std::lock_guard lock(mutex);
        if (finished)
            return;
    }
    end();
    enforceGrace();
}

void Lifetime::enforceGrace() {
    using Clock = std::chrono::steady_clock;
    std::unique_lock lock(mutex);
    changed.wait_until(lock, Clock::now() + graceAfterSignal, [this] { return finished || watch.isDead(); });
    if (!finished && watch.isDead())
        changed.wait_until(lock, Clock::now() + graceAfterHostsDeath, [this] { return finished; });
    if (finished)
        return;
    if (watch.isDead())
        removeNames();
    _exit(1);
}

}  // namespace Morvane::Worker
