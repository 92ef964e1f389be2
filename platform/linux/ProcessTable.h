#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

namespace Morvane::Platform {

/// What the system's table says of one process, see proc(5).
struct ProcessEntry {
    char state;           ///< R, S, D: lives; T: stopped; Z, X: dead
    pid_t parent;         ///< 0 for none
    std::uint64_t start;  ///< clock ticks from the system's start: with the number, a process's identity
};

/// Nothing where there is no such process, or where it can't be told.
std::optional<ProcessEntry> processEntry(pid_t process);

}  // namespace Morvane::Platform
