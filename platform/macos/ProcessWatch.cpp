#include "platform/ProcessWatch.h"

#include <sys/event.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>

namespace Morvane::Platform {

namespace {

// Events of our own. They stay triggered, so that every wait sees them.
constexpr uintptr_t cancelEvent = 1;
constexpr uintptr_t deathEvent = 2;

void trigger(int queue, uintptr_t event) {
    struct kevent change;
    EV_SET(&change, event, EVFILT_USER, 0, NOTE_TRIGGER, 0, nullptr);
    kevent(queue, &change, 1, nullptr, 0, nullptr);
}

bool isDeath(const struct kevent& event) {
    return event.filter == EVFILT_PROC || event.ident == deathEvent;
}

timespec toTimespec(std::chrono::nanoseconds duration) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    return {static_cast<time_t>(seconds.count()), static_cast<long>((duration - seconds).count())};
}

}  // namespace

// One kernel queue. The kernel tells of a death once, to one wait, which passes it on as an event of ours.
// `wakeUp` is not needed here.
ProcessWatch::ProcessWatch(pid_t process) : watched(kqueue()), wakeUp(-1) {
    struct kevent own[2];
    EV_SET(&own[0], cancelEvent, EVFILT_USER, EV_ADD, 0, 0, nullptr);
    EV_SET(&own[1], deathEvent, EVFILT_USER, EV_ADD, 0, 0, nullptr);
    struct kevent exit;
    EV_SET(&exit, static_cast<uintptr_t>(process), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
    bool watches = watched != -1 && kevent(watched, own, 2, nullptr, 0, nullptr) != -1;
    if (watches && kevent(watched, &exit, 1, nullptr, 0, nullptr) == -1) {
        // A dead child that nobody has waited for has a number still, but nothing to wait for.
        const int reason = errno;
        watches = reason == ESRCH && kill(process, 0) == 0;
        if (watches)
            trigger(watched, deathEvent);
        errno = reason;
    }
    if (!watches) {
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
        struct kevent happened[3];
        const int count = kevent(watched, nullptr, 0, happened, 3, timeout ? &left : nullptr);
        if (count > 0 && std::any_of(happened, happened + count, isDeath)) {
            trigger(watched, deathEvent);
            return Outcome::Died;
        }
        if (count > 0)
            return Outcome::Cancelled;
        if (timeout && Clock::now() >= end)
            return Outcome::TimedOut;
    }
}

void ProcessWatch::cancel() noexcept {
    trigger(watched, cancelEvent);
}

}  // namespace Morvane::Platform
