#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Corvel {

/// The folder in which host and helper share memory: made for this process alone (mode 0700) and told to the
/// bridge through CORVEL_TEMP_DIR. It is in memory (/dev/shm) where `bytesNeeded` and some more fit, else in
/// the system's temporary folder. Where the user has set CORVEL_TEMP_DIR, that folder is used as it is and
/// nothing is made.
///
/// The process holds a lock on its folder for as long as it lives, however it ends; that tells
/// `sweepPrivateFolders` which ones nobody needs any more.
///
/// Changes the environment, so make it before there are threads. The destructor removes the folder with what
/// is left in it, once the nodes that used it are gone.
class PrivateFolder {
public:
    /// Throws Failure (HelperFailed) when no folder can be made.
    explicit PrivateFolder(std::uint64_t bytesNeeded);
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    /// What CORVEL_TEMP_DIR says now.
    const std::string& path() const { return path_; }

    /// Removes a folder that was made here with everything in it. Any thread.
    void remove() const;

private:
    std::string path_;
    int lock = -1;  // descriptor of the folder; -1 for the user's own
};

/// Removes the private folders of this user's processes that are dead, with the semaphores of the bridges in
/// them, and answers their paths. Folders of living processes are never touched.
std::vector<std::string> sweepPrivateFolders();

}  // namespace Corvel
