#include "host/render/PrivateFolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "filesystem/FileSystem.h"
#include "host/render/Failure.h"
#include "quicktime/SharedObjects.h"

namespace Corvel {
namespace {

namespace fs = std::filesystem;

constexpr const char* variable = "CORVEL_TEMP_DIR";
constexpr const char* memoryFolder = "/dev/shm";
constexpr const char* namePrefix = "corvel-memory-";

bool hasRoom(const char* folder, std::uint64_t bytes) {
    struct statvfs state {};
    return statvfs(folder, &state) == 0 &&
           static_cast<std::uint64_t>(state.f_bavail) * state.f_frsize >= bytes;
}

std::string temporaryFolder() {
    std::error_code error;
    const fs::path folder = fs::temp_directory_path(error);
    return error ? "/tmp" : folder.string();
}

// The descriptor that holds the lock; -1 when another process has it or the folder has gone.
int lockFolder(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor == -1) {
        return -1;
    }
    struct stat state {};
    // A folder that has been swept between the two calls has no link any more.
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0 && fstat(descriptor, &state) == 0 && state.st_nlink > 0) {
        return descriptor;
    }
    close(descriptor);
    return -1;
}

// The process's number in the name is for people; the lock is what counts.
bool makeFolderIn(const std::string& parent, std::string& path, int& lock) {
    // Others may sweep the folder before it is locked.
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::string name = fmt::format("{}/{}{}-XXXXXX", parent, namePrefix, getpid());
        if (mkdtemp(name.data()) == nullptr) {
            return false;
        }
        lock = lockFolder(name);
        path = name;
        if (lock != -1) {
            return true;
        }
    }
    return false;
}

bool isOwn(const fs::path& path) {
    struct stat state {};
    return lstat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode) && state.st_uid == geteuid();
}

bool sweepFolder(const std::string& path) {
    const int lock = lockFolder(path);
    if (lock == -1) {
        return false;
    }
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(path) / "processbridge", error)) {
        Morvane::QuickTime::removeSharedObjects(entry.path().string());
    }
    const bool removed = Morvane::FileSystem::removeTree(path);
    close(lock);
    return removed;
}

}  // namespace

PrivateFolder::PrivateFolder(std::uint64_t bytesNeeded) {
    if (const char* users = std::getenv(variable)) {
        path_ = users;
        return;
    }
    // Twice the need: another render may be about to take its share.
    const bool inMemory = hasRoom(memoryFolder, 2 * bytesNeeded) && makeFolderIn(memoryFolder, path_, lock);
    if (!inMemory && !makeFolderIn(temporaryFolder(), path_, lock)) {
        throw Failure(Exit::HelperFailed,
                      fmt::format("cannot make a folder for shared memory: {}; set {} to a folder "
                                  "that can be written",
                                  std::strerror(errno), variable));
    }
    setenv(variable, path_.c_str(), 1);
}

PrivateFolder::~PrivateFolder() {
    remove();
    if (lock != -1) {
        unsetenv(variable);
        close(lock);
    }
}

void PrivateFolder::remove() const {
    if (lock != -1) {
        Morvane::FileSystem::removeTree(path_);
    }
}

std::vector<std::string> sweepPrivateFolders() {
    std::vector<std::string> swept;
    for (const std::string& parent : {std::string(memoryFolder), temporaryFolder()}) {
        std::error_code error;
        for (const fs::directory_entry& entry : fs::directory_iterator(parent, error)) {
            const std::string name = entry.path().filename().string();
            if (name.rfind(namePrefix, 0) == 0 && isOwn(entry.path()) && sweepFolder(entry.path().string())) {
                swept.push_back(entry.path().string());
            }
        }
    }
    return swept;
}

}  // namespace Corvel
