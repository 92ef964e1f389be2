#include "platform/ProcessWatch.h"

#include <sys/event.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>

namespace Morvane::Platform {

namespace {

constexpr uintptr_t cancelEvent = 1;

timespec toTimespec(std::chrono::nanoseconds duration) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    return {static_cast<time_t>(seconds.count()), static_cast<long>((duration - seconds).count())};
}

}  // namespace

// One kernel queue with two events; neither is cleared when it is read, so that every wait sees it. `wakeUp`
// is not needed here.
ProcessWatch::ProcessWatch(pid_t process) : watched(kqueue()), wakeUp(-1) {
    struct kevent events[2];
    EV_SET(&events[0], static_cast<uintptr_t>(process), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    EV_SET(&events[1], cancelEvent, EVFILT_USER, EV_ADD, 0, 0, nullptr);
    if (watched == -1 || kevent(watched, events, 2, nullptr, 0, nullptr) == -1) {
        const int reason = errno;
        if (watched != -1)
            close(watched);
        throw std::system_error(reason, std::generic_category(),
                                "cannot watch process " + std::to_string(process));
    }
}

ProcessWatch::~ProcessWatch() {
    close(watched);
}

bool ProcessWatch::isDead() const {
    return wait(std::chrono::milliseconds(0)) == Outcome::Died;
}

ProcessWatch::Outcome ProcessWatch::wait(std::optional<std::chrono::milliseconds> timeout) const {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + timeout.value_or(std::chrono::milliseconds(0));
    for (;;) {
        const auto left = toTimespec(std::max<Clock::duration>(end - Clock::now(), Clock::duration::zero()));
        struct kevent happened[2];
        const int count = kevent(watched, nullptr, 0, happened, 2, timeout ? &left : nullptr);
        for (int i = 0; i < count; ++i)
            if (happened[i].filter == EVFILT_PROC)
                return Outcome::Died;
        if (count > 0)
            return Outcome::Cancelled;
        if (timeout && Clock::now() >= end)
            return Outcome::TimedOut;
    }
}

void ProcessWatch::cancel() noexcept {
    struct kevent event;
    EV_SET(&event, cancelEvent, EVFILT_USER, 0, NOTE_TRIGGER, 0, nullptr);
    kevent(watched, &event, 1, nullptr, 0, nullptr);
}

}  // namespace Morvane::Platform
