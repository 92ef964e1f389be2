#include "platform/SemaphoreOwner.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

#include "platform/linux/ProcessTable.h"

namespace Morvane::Platform {

namespace {

enum class Holds { Yes, No, Unknown };

/// How a process's list of mappings shows a file: device and number. Not its name: the C library makes a
/// semaphore under a passing name and then links it to the lasting one.
struct MappedFile {
    unsigned major, minor;
    ino_t number;
};

Holds holdsMapping(pid_t process, const MappedFile& file) {
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    std::string line;
    bool anything = false;
    while (std::getline(maps, line)) {
        anything = true;
        unsigned major = 0, minor = 0;
        unsigned long number = 0;
        if (std::sscanf(line.c_str(), "%*s %*s %*s %x:%x %lu", &major, &minor, &number) == 3 &&
            number == file.number && major == file.major && minor == file.minor)
            return Holds::Yes;
    }
    return anything ? Holds::No : Holds::Unknown;
}

/// 0 when it cannot be told.
pid_t parentOf(pid_t process) {
    const auto entry = processEntry(process);
    return entry ? entry->parent : 0;
}

}  // namespace

pid_t ancestorWithSemaphore(const std::string& name) {
    const pid_t parent = getppid();
    struct stat state {};
    if (stat(("/dev/shm/sem." + name).c_str(), &state) != 0)
        return 0;
    const MappedFile semaphore{gnu_dev_major(state.st_dev), gnu_dev_minor(state.st_dev), state.st_ino};
    bool unknown = false;
    for (pid_t ancestor = parent; ancestor > 0; ancestor = parentOf(ancestor)) {
        const Holds holds = holdsMapping(ancestor, semaphore);
        if (holds == Holds::Yes)
            return ancestor;
        unknown = unknown || (ancestor == parent && holds == Holds::Unknown);
    }
    // An orphan's new parent is the system's first process or a session manager, never in the orphan's own
    // session.
    return unknown && getsid(parent) == getsid(0) && getppid() == parent ? parent : 0;
}

}  // namespace Morvane::Platform
