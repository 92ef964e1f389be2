#include "host/farm/FarmLock.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

#include "host/render/Failure.h"

namespace Corvel {
namespace {

struct flock wholeFile() {
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    return lock;
}

bool isStillNamed(int descriptor, const std::string& path) {
    struct stat ours = {};
    struct stat named = {};
    return fstat(descriptor, &ours) == 0 && stat(path.c_str(), &named) == 0 && ours.st_ino == named.st_ino &&
           ours.st_dev == named.st_dev;
}

}  // namespace

FarmLock::FarmLock(const FarmPlace& place, int seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (!take(place)) {
        if (std::chrono::steady_clock::now() >= end) {
            const auto pid = holder(place);
            throw Failure(
                Exit::Usage,
                fmt::format("{} is being rendered in chunks already{}; corvel farm status tells more",
                            place.output(), pid ? fmt::format(", by process {}", *pid) : ""));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

FarmLock::~FarmLock() {
    close(descriptor);
}

bool FarmLock::take(const FarmPlace& place) {
    std::error_code error;
    std::filesystem::create_directory(place.folder(), error);
    descriptor = open(place.lockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0 && errno != ENOENT) {
        throw Failure(Exit::NodeFailed, fmt::format("cannot write into {} on {}: {}", place.folder(),
                                                    nodeName(), std::strerror(errno)));
    }
    struct flock lock = wholeFile();
    // Who had the lock may have removed the file with the folder: then it is another file by now.
    if (descriptor >= 0 && fcntl(descriptor, F_SETLK, &lock) == 0 &&
        isStillNamed(descriptor, place.lockFile())) {
        return true;
    }
    close(descriptor);
    descriptor = -1;
    return false;
}

std::optional<pid_t> FarmLock::holder(const FarmPlace& place) {
    const int file = open(place.lockFile().c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock = wholeFile();
    const bool known = file >= 0 && fcntl(file, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    close(file);
    return known ? std::optional(lock.l_pid) : std::nullopt;
}

}  // namespace Corvel
