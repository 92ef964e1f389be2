#include "worker/output/DeviceLock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstring>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

StatusError heldByAnother(int descriptor, const std::string& deviceName) {
    char holder[16] = {};
    const ssize_t length = pread(descriptor, holder, sizeof holder - 1, 0);
    const std::string process = length > 0 ? std::string(" by process ") + holder : "";
    return StatusError(Status::NoPermission,
                       fmt::format("cannot open {}: it is in use{}", deviceName, process));
}

StatusError notLockable(int systemError, const std::string& deviceName, const std::string& file) {
    return StatusError(statusOfSystemError(systemError),
                       fmt::format("cannot open {}: {}: {}", deviceName, file, std::strerror(systemError)));
}

}  // namespace

std::string DeviceLock::path(const std::string& key) {
    std::string name;
    for (const char character : key)
        name += std::isalnum(static_cast<unsigned char>(character)) || character == '.' || character == '-'
                    ? character
                    : '_';
    return fmt::format("/tmp/corvel-output-{}-{}.lock", getuid(), name);
}

DeviceLock::DeviceLock(const std::string& key, const std::string& deviceName) : file(path(key)) {
    do {
        if (descriptor != -1)
            close(descriptor);
        descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (descriptor == -1)
            throw notLockable(errno, deviceName, file);
        if (flock(descriptor, LOCK_EX | LOCK_NB) == -1) {
            const StatusError error = errno == EWOULDBLOCK ? heldByAnother(descriptor, deviceName)
                                                           : notLockable(errno, deviceName, file);
            close(descriptor);
            throw error;
        }
    } while (!isStillTheFile());  // its last owner may have removed it between opening and locking
    const std::string process = std::to_string(getpid());
    // Only for the message of whoever comes next: without the number it still says that the device is in use.
    if (ftruncate(descriptor, 0) == 0) [[maybe_unused]]
        const ssize_t written = pwrite(descriptor, process.data(), process.size(), 0);
}

DeviceLock::~DeviceLock() {
    unlink(file.c_str());
    close(descriptor);
}

bool DeviceLock::isStillTheFile() const {
    struct stat opened {};
    struct stat named {};
    return fstat(descriptor, &opened) == 0 && stat(file.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace Morvane::Worker
