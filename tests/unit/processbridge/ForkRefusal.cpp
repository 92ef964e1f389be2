#include "tests/unit/processbridge/ForkRefusal.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>

namespace {

bool refused = false;

}  // namespace

namespace Morvane::Testing {

void refuseToFork() {
    refused = true;
}

}  // namespace Morvane::Testing

/// Stands in for the C library's function of that name in this program.
extern "C" pid_t fork() {
    if (refused) {
        errno = EAGAIN;
        return -1;
    }
    static const auto original = reinterpret_cast<pid_t (*)()>(dlsym(RTLD_NEXT, "fork"));
    return original();
}
