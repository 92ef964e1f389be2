#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Morvane::Platform {

/// What a process that works on untrusted files may still do; everything else is given up for good.
///
/// Always given up: new privileges, other programs and processes (threads stay), signals to other processes,
/// the network, and what only administration needs. These are refused with an error, not with the process's
/// end.
struct Confinement {
    std::vector<std::string> readable;   ///< files, and folders with all that is below
    std::vector<std::string> writable;   ///< folders in which files may also be made, written and removed
    std::vector<std::string> removable;  ///< folders in which files may also be removed
    std::uint64_t memoryBytes;           ///< private memory; what goes beyond is refused
    std::uint64_t fileBytes;             ///< length of a file that is written
};

/// Confines the calling process. REQUIRES: it has one thread. What this system does not have is left out
/// (`confinementText` tells); throws std::system_error where what it has fails. Files that are open stay
/// usable.
void confine(const Confinement& confinement);

/// What `confine` puts in force on this system, in words: "no network, …".
std::string confinementText();

/// False where the person has turned confinement off: the environment variable CORVEL_HELPER_CONFINEMENT is
/// "off".
bool isConfinementWanted();

/// Three quarters of the machine's memory, but at least 2 GiB.
std::uint64_t generousMemoryBytes();

/// Ends the calling process when the thread that forked it ends. Best effort.
void endWithParent();

}  // namespace Morvane::Platform
