#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "processbridge/Mutex.h"

namespace Morvane::ProcessBridge {

struct ControllerResources;

/// The host's end of one bridge: starts one worker process, sends it requests, stops it. The worker is not
/// watched: if it dies while a request is in flight, the calling thread waits for ever with the mutex held.
///
/// The host's process only. Requests may come from several threads and are served one after the other;
/// placing data in shared memory before a request is not covered by the lock. Construction and destruction
/// belong to one thread.
class Controller {
public:
    /// Creates the shared files' folder and both semaphores, then launches `workerPath` (a leading ".." is
    /// the host bundle's content folder) with `name` and `arguments`. There is no handshake. Throws
    /// std::runtime_error "Could not launch worker process" when the worker has ended by the time it is
    /// asked, at once, whether it runs; files and semaphores are then left in place. A child in which the
    /// program cannot be executed throws it too, in the child: compare `getpid()` and leave with `_exit`.
    Controller(const std::string& name, const std::string& workerPath,
               const std::vector<std::string>& arguments);

    /// Stops the worker with SIGTERM, waits for it without limit, then closes and unlinks all shared objects.
    /// Throws std::runtime_error "Worker process already stopped?" when the signal cannot be sent; the shared
    /// objects are then left in place.
    virtual ~Controller() noexcept(false);

    Controller(const Controller&) = delete;
    Controller& operator=(const Controller&) = delete;

    /// One exchange with the worker: blocks until it has answered and `completeRequest` has returned. What
    /// `completeRequest` throws passes through.
    void sendRequest(const std::string& request);

    /// The data file's mapping; null when not mapped.
    const char* sharedData() const;
    /// Maps at least `length` bytes of the data file; false when it cannot be grown.
    bool resizeSharedData(std::uint64_t length);
    /// Places `text` and its NUL at the start of the data file, which stays mapped. Writes nothing where the
    /// file cannot be grown.
    void writeSharedString(const std::string& text);
    /// The NUL-terminated text at the start of the data file, which is unmapped afterwards.
    std::string readSharedString();

protected:
    /// Called with the request's text once the worker has answered it, with the data file mapped and the
    /// mutex held. The mapping is missing if the file could not be mapped.
    virtual void completeRequest(const std::string& request) = 0;

    /// The NUL-terminated text at the start of the mapping, at most `longest` bytes of it. It ends with the
    /// mapping if the worker wrote no NUL; empty without a mapping.
    std::string sharedText(std::uint64_t longest = std::numeric_limits<std::uint64_t>::max()) const;

private:
    friend class ControllerData;

    Mutex mutex;

protected:
    ControllerResources* resources;
};

}  // namespace Morvane::ProcessBridge
