#include "platform/Unheld.h"

#include <fcntl.h>

#include <semaphore.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace Morvane::Platform {

namespace {

constexpr const char* semaphoreFolder = "/dev/shm";
constexpr const char* semaphorePrefix = "sem.";

// The kernel gives out a lease for reading only while nobody has the file open for writing; an open file
// whose descriptor is closed and that is only mapped counts as open. It is given back at once.
bool leaseIsHad(int descriptor) {
    // Should somebody open the file in between, its owner is told by a signal that means nothing.
    if (fcntl(descriptor, F_SETSIG, SIGURG) != 0 || fcntl(descriptor, F_SETLEASE, F_RDLCK) != 0)
        return false;
    fcntl(descriptor, F_SETLEASE, F_UNLCK);
    return true;
}

// The other names of one file are told by its number alone: a passing name says nothing, and another
// program's semaphore may have one that looks the same.
void removeOtherNames(const struct stat& semaphore) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::directory_iterator entry(semaphoreFolder, error);
    for (const fs::directory_iterator end; !error && entry != end; entry.increment(error)) {
        const std::string path = entry->path().string();
        struct stat state {};
        if (lstat(path.c_str(), &state) == 0 && state.st_dev == semaphore.st_dev &&
            state.st_ino == semaphore.st_ino)
            unlink(path.c_str());
    }
}

}  // namespace

bool isUnheldFile(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor == -1)
        return false;
    struct stat state {};
    const bool own = fstat(descriptor, &state) == 0 && S_ISREG(state.st_mode) && state.st_uid == geteuid();
    const bool unheld = own && leaseIsHad(descriptor);
    close(descriptor);
    return unheld;
}

// The C library keeps a semaphore as a mapped file, which it has mapped before the file gets its name.
std::vector<std::string> unheldSemaphores(const std::string& prefix) {
    namespace fs = std::filesystem;
    std::vector<std::string> names;
    const std::string wanted = semaphorePrefix + prefix;
    std::error_code error;
    fs::directory_iterator entry(semaphoreFolder, error);
    for (const fs::directory_iterator end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.rfind(wanted, 0) == 0 && isUnheldFile(entry->path().string()))
            names.push_back(name.substr(std::string(semaphorePrefix).size()));
    }
    return names;
}

bool removeSemaphore(const std::string& name) {
    struct stat state {};
    const std::string path = std::string(semaphoreFolder) + "/" + semaphorePrefix + name;
    const bool hasOtherNames = lstat(path.c_str(), &state) == 0 && state.st_nlink > 1;
    if (hasOtherNames)
        removeOtherNames(state);
    return sem_unlink(name.c_str()) == 0 || hasOtherNames;
}

}  // namespace Morvane::Platform
