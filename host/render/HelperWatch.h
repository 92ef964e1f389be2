#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/ProcessWatch.h"

namespace Corvel {

/// Notices when a child of this process dies that should not. A helper that dies while a request is under way
/// leaves the thread that sent the request waiting for ever, so somebody else has to look: a thread of this
/// object's, ten times a second, without reaping, so that whoever owns the child still finds it.
///
/// It looks at all children of the process, since a helper can die before anybody has learned its number; do
/// not start others meanwhile.
class HelperWatch {
public:
    using Died = std::function<void(const Morvane::Platform::ProcessEnd&)>;

    /// Starts watching. On the watch's thread, `died` is called once and `look` each time before the watch
    /// looks.
    HelperWatch(Died died, std::function<void()> look);
    ~HelperWatch();
    HelperWatch(const HelperWatch&) = delete;
    HelperWatch& operator=(const HelperWatch&) = delete;

    /// From now on a death is nothing to report. Waits for a call of `died` to return.
    void expectEnd();

private:
    void watch();

    const Died died;
    const std::function<void()> look;
    std::mutex mutex;
    std::condition_variable stopped;
    bool expected = false;
    bool stopping = false;
    std::thread thread;
};

}  // namespace Corvel
