#include "processbridge/NamedSemaphore.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace Morvane::ProcessBridge {

namespace {

constexpr std::size_t longestName = 30;

/// 31 characters, the last one a NUL: as a C string at most the first 30 of `name`.
std::string cutName(std::string name) {
    name.resize(longestName);
    name.push_back('\0');
    return name;
}

[[noreturn]] void fail(const char* message) {
    std::perror(message);
    std::abort();
}

}  // namespace

NamedSemaphore::NamedSemaphore(const std::string& fullName, bool create, unsigned initialValue)
    : name(cutName(fullName)),
      handle(create ? sem_open(name.c_str(), O_CREAT | O_EXCL, 0600, initialValue)
                    : sem_open(name.c_str(), 0)) {
    if (handle == SEM_FAILED) {
        fail("Could not open semaphore");
    }
}

NamedSemaphore::~NamedSemaphore() {
    if (sem_close(handle) == -1) {
        // Spelled like this on purpose: it is looked for in logs.
        std::perror("Could not close sempahore");
    }
    sem_unlink(name.c_str());
}

bool NamedSemaphore::acquire(int count) {
    for (int acquired = 0; acquired < count;) {
        if (sem_wait(handle) == 0) {
            ++acquired;
        } else if (errno != EINTR) {
            fail("Could not acquire semaphore");
        }
    }
    return true;
}

bool NamedSemaphore::release(int count) {
    for (auto left = static_cast<unsigned>(count); left != 0; --left) {
        if (sem_post(handle) != 0) {
            fail("Could not release semaphore");
        }
    }
    return true;
}

}  // namespace Morvane::ProcessBridge
