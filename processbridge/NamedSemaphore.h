#pragma once

#include <semaphore.h>

#include <string>

namespace Morvane::ProcessBridge {

/// A counting semaphore in the system's name space. The controller creates its two, the worker opens them.
/// Names hold at most 30 characters; a longer one is cut. A failure ends the process with a message and
/// `abort`, since neither side can know any more whose turn it is.
class NamedSemaphore {
public:
    /// Creates the semaphore (it must not exist yet) with `initialValue`, or opens an existing one.
    NamedSemaphore(const std::string& name, bool create, unsigned initialValue);

    /// Closes and unlinks the semaphore, whoever created it.
    ~NamedSemaphore();

    NamedSemaphore(const NamedSemaphore&) = delete;
    NamedSemaphore& operator=(const NamedSemaphore&) = delete;

    /// Waits until `count` waits have succeeded; blocks without limit. A count below 1 returns at once.
    bool acquire(int count);

    /// Posts `count` times. Only a count of exactly 0 returns at once; a negative one is deliberately not
    /// caught as it is in `acquire`, and posts until the semaphore overflows.
    bool release(int count);

private:
    std::string name;  ///< always 31 characters, padded with NULs, the last one a NUL
    sem_t* handle;
};

}  // namespace Morvane::ProcessBridge
