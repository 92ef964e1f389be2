#pragma once

#include <sys/types.h>

#include <string>

namespace Morvane::Platform {

/// The nearest ancestor of the calling process that has the POSIX semaphore `name` (without a leading "/")
/// open: the process that made the semaphore and then, maybe through a script, this process. 0 when there is
/// none, which means that it has died already, before the calling process could look.
///
/// Where the system does not tell who has a semaphore open, the parent is taken on trust.
pid_t ancestorWithSemaphore(const std::string& name);

}  // namespace Morvane::Platform
