#include "platform/ProcessWatch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <system_error>

namespace Morvane::Platform {

namespace {

using Clock = std::chrono::steady_clock;

bool isReadable(int descriptor) {
    pollfd entry{descriptor, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
}

/// Milliseconds until `end` for poll, rounded up so that it is never asked too early; -1 for no end.
int remaining(const std::optional<Clock::time_point>& end) {
    if (!end)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*end - Clock::now()).count();
    constexpr std::int64_t longest = 1'000'000;
    return static_cast<int>(left < 0 ? 0 : (left > longest ? longest : left));
}

}  // namespace

// The kernel's process descriptor: it becomes readable when the last thread of the process has ended, and
// stays bound to this process however often the number is used again. By number, since older C libraries lack
// the call.
ProcessWatch::ProcessWatch(pid_t process)
    : watched(static_cast<int>(syscall(SYS_pidfd_open, process, 0))), wakeUp(-1) {
    if (watched == -1)
        throw std::system_error(errno, std::generic_category(),
                                "cannot watch process " + std::to_string(process));
    wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeUp == -1) {
        const int reason = errno;
        close(watched);
        throw std::system_error(reason, std::generic_category(),
                                "cannot watch process " + std::to_string(process));
    }
}

ProcessWatch::~ProcessWatch() {
    close(watched);
    close(wakeUp);
}

bool ProcessWatch::isDead() const {
    return isReadable(watched);
}

ProcessWatch::Outcome ProcessWatch::wait(std::optional<std::chrono::milliseconds> timeout) const {
    std::optional<Clock::time_point> end;
    if (timeout)
        end = Clock::now() + *timeout;
    for (;;) {
        pollfd entries[] = {{watched, POLLIN, 0}, {wakeUp, POLLIN, 0}};
        const int ready = poll(entries, 2, remaining(end));
        if (ready > 0 && entries[0].revents != 0)
            return Outcome::Died;
        if (ready > 0 && entries[1].revents != 0)
            return Outcome::Cancelled;
        if (end && Clock::now() >= *end)
            return Outcome::TimedOut;
    }
}

void ProcessWatch::cancel() noexcept {
    const std::uint64_t one = 1;
    // Fails only where the counter is full, and then it is readable already.
    [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
}

}  // namespace Morvane::Platform
