#pragma once

#include <sys/types.h>

#include <vector>

namespace Morvane::Platform {

/// A process that the calling process has started and that still runs.
struct ChildProcess {
    pid_t process;
    bool stopped;  ///< held by SIGSTOP or the like: it does nothing until somebody lets it go on

    bool operator==(const ChildProcess&) const = default;
};

/// The calling process's own living children, whichever of its threads started them, in no order. The dead
/// that nobody has waited for are left out. Empty also where the system does not tell. Any thread; does not
/// block, but looks at every process of the system, so do not ask in a loop.
std::vector<ChildProcess> childProcesses();

}  // namespace Morvane::Platform
