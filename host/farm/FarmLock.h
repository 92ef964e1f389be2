#pragma once

#include <sys/types.h>

#include <optional>

#include "host/farm/FarmPlace.h"

namespace Corvel {

/// The right to change a render in chunks: to submit, to resume, to join, and to be its engine. A lock of the
/// file system, so that it holds between machines and ends with its process. One object a process at a time:
/// closing any descriptor of the file would drop the lock. A process that this one starts does not have it.
class FarmLock {
public:
    /// Makes the folder where it is not there. Waits up to `seconds` for whoever has the lock. Throws
    /// Failure: Usage, with who has it; NodeFailed where the folder cannot be made.
    FarmLock(const FarmPlace& place, int seconds);
    ~FarmLock();
    FarmLock(const FarmLock&) = delete;
    FarmLock& operator=(const FarmLock&) = delete;

    /// The process of this machine that has the lock; nothing where nobody has.
    static std::optional<pid_t> holder(const FarmPlace& place);

private:
    bool take(const FarmPlace& place);

    int descriptor = -1;
};

}  // namespace Corvel
