#pragma once

#include <atomic>

#include "worker/bridge/BridgeEnd.h"
#include "worker/bridge/Mode.h"

namespace Morvane::Worker {

/// Serves requests one after the other until it is told to end. Every request gets exactly one answer, also
/// one that cannot be read, and no request ends the loop.
class RequestLoop {
public:
    /// Both must outlive the loop.
    RequestLoop(BridgeEnd& end, Mode& requestMode) : bridge(end), mode(requestMode) {}

    /// Serves until `end` is called. A request that is being served then is answered first; one that comes at
    /// that moment may not be, as when a worker dies.
    void run();

    /// Ends the loop; a handler that waits is interrupted. Any thread, while the mode lives.
    void end();

    /// Answers the one request that is in the files. Public for tests and fuzzing without semaphores' waits.
    void serve();

private:
    void answerFailure(const std::string& requestText);

    BridgeEnd& bridge;
    Mode& mode;
    std::atomic<bool> ending{false};
};

}  // namespace Morvane::Worker
