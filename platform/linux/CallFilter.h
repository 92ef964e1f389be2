#pragma once

namespace Morvane::Platform {

/// Refuses the calling thread and what it starts, for good, the system calls that no work on files needs:
/// network, other programs and processes, other processes' signals and memory, rights and owners of files,
/// administration. Throws std::system_error.
void filterCalls();

}  // namespace Morvane::Platform
