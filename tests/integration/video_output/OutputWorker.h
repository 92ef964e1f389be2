#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "quicktime/QuickTimeVideoOutputIPCController.h"

namespace Morvane::Testing {

/// A real worker in a folder of the test's own, driven through its controller. What it writes to standard
/// error is kept. At the end nothing of it is left: no process, no file, no semaphore.
class OutputWorker {
public:
    /// A worker that has opened nothing.
    OutputWorker();

    /// A worker that is told to open a device.
    OutputWorker(QuickTime::VideoOutputHandle device, const std::string& name);
    ~OutputWorker();

    QuickTime::QuickTimeVideoOutputIPCController* operator->() { return controller.get(); }

    /// The names of this worker's devices. Asks it each time, while `getDevices` asks one worker for the
    /// whole process.
    std::vector<std::string> deviceNames();

    /// The worker's process.
    pid_t pid() const { return worker; }

    /// Waits until it has mapped `bytes` bytes of the shared data file, which it does when it begins with a
    /// frame and the file has grown. False where patience runs out before.
    bool hasMapped(std::uint64_t bytes) const;

    /// What it has written to standard error so far.
    std::string standardError() const;

    /// The network device and the first display. Their handles are the same for all workers.
    static QuickTime::VideoOutputHandle network() {
        return reinterpret_cast<QuickTime::VideoOutputHandle>(1);
    }
    static QuickTime::VideoOutputHandle display() {
        return reinterpret_cast<QuickTime::VideoOutputHandle>(2);
    }

private:
    template <typename... Arguments>
    void start(const Arguments&... arguments);

    std::uint64_t mappedBytes() const;

    std::filesystem::path folder;
    std::string dataFile;  ///< its name
    std::unique_ptr<QuickTime::QuickTimeVideoOutputIPCController> controller;
    pid_t worker = -1;
};

/// The mode record of that size and rate (frames a second).
QuickTime::VideoOutputMode outputMode(int width, int height, double rate);

}  // namespace Morvane::Testing
