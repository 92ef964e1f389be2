#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>

namespace Morvane::Platform {

/// Notices the death of one process, whoever its parent is, without reaping it. The worker watches its host
/// with it and the host its worker. It is the whole process that counts: the end of one thread, also of the
/// one that forked, means nothing. A dead child that nobody has waited for yet counts as dead.
///
/// Any thread may call any operation; several may wait at once.
class ProcessWatch {
public:
    enum class Outcome { Died, TimedOut, Cancelled };

    /// Watches the process that has the number `process` now; a later process of the same number is never
    /// mistaken for it. Throws std::system_error, with ESRCH where there is no such process.
    explicit ProcessWatch(pid_t process);
    ~ProcessWatch();
    ProcessWatch(const ProcessWatch&) = delete;
    ProcessWatch& operator=(const ProcessWatch&) = delete;

    /// Whether the process is dead by now. Does not block.
    bool isDead() const;

    /// Blocks until the process is dead, `cancel` was called or `timeout` has passed; without one, for ever.
    Outcome wait(std::optional<std::chrono::milliseconds> timeout = std::nullopt) const;

    /// Makes every `wait`, running or to come, return. A death is still told first.
    void cancel() noexcept;

private:
    int watched;                  ///< descriptor that tells of the death
    [[maybe_unused]] int wakeUp;  ///< descriptor that tells of `cancel`; not every system needs it
};

/// How a process ended.
struct ProcessEnd {
    bool signalled;  ///< by a signal, not by an exit
    int number;      ///< the signal's number, else the exit code
};

/// How the calling process's own child `child` ended, nothing while it runs. Does not block and does not
/// reap: a later wait for the child still finds it.
std::optional<ProcessEnd> endOfChild(pid_t child);

}  // namespace Morvane::Platform
