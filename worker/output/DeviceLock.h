#pragma once

#include <string>

namespace Morvane::Worker {

/// Keeps a device to one worker: a lock file in /tmp, held from construction to destruction. The system
/// releases it with the process, however that ends; the file of a killed worker is taken over by the next
/// one. This class makes the file and removes it.
///
/// The folder is always /tmp, whatever the bridge's own folder is, since every bridge may have another one.
class DeviceLock {
public:
    /// Locks `key` for the device called `deviceName`. Throws StatusError (NoPermission), naming the device
    /// and the process that holds it, when it is taken.
    DeviceLock(const std::string& key, const std::string& deviceName);
    ~DeviceLock();
    DeviceLock(const DeviceLock&) = delete;
    DeviceLock& operator=(const DeviceLock&) = delete;

    /// The lock file of `key`.
    static std::string path(const std::string& key);

private:
    bool isStillTheFile() const;

    std::string file;
    int descriptor = -1;
};

}  // namespace Morvane::Worker
