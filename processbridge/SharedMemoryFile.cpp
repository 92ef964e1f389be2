#include "processbridge/SharedMemoryFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "filesystem/FileSystem.h"
#include "platform/FilePages.h"

namespace Morvane::ProcessBridge {

namespace {

std::string bridgeFolder() {
    const char* folder = std::getenv("CORVEL_TEMP_DIR");
    return std::string(folder == nullptr ? "/tmp" : folder) + "/processbridge";
}

}  // namespace

SharedMemoryFile::SharedMemoryFile(const std::string& name, bool /*create*/)
    : path(bridgeFolder() + "/" + name) {
    // An existing folder is fine, and a missing one shows when the file is opened.
    FileSystem::makeDirectory(bridgeFolder(), 0775);
}

SharedMemoryFile::~SharedMemoryFile() {
    release();
    ::unlink(path.c_str());
}

std::uint64_t SharedMemoryFile::lengthOnDisk() const {
    struct stat status {};
    return fstat(fd, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

void SharedMemoryFile::open() {
    fd = ::open(path.c_str(), O_RDWR | O_CREAT, 0600);
    if (fd == -1) {
        std::perror("Could not open file");
        return;
    }
    size_ = lengthOnDisk();
}

bool SharedMemoryFile::resize(std::uint64_t length) {
    if (address == nullptr && fd == -1) {
        open();
    }
    unmap();
    return resizeOpened(length, Platform::populatePagesFlag());
}

bool SharedMemoryFile::resizeOpened(std::uint64_t length, int extraMapFlags) {
    const std::uint64_t wanted = length == 0 ? lengthOnDisk() : length;
    if (size_ < wanted) {
        // The new size is deliberately kept when the file cannot grow.
        size_ = wanted;
        if (ftruncate(fd, static_cast<off_t>(wanted)) != 0) {
            std::perror("file resize failed");
            return false;
        }
    }
    // Blocks are had now: a write through the mapping could only fail by a signal.
    if (fd != -1 && !Platform::allocateFileBlocks(fd, wanted)) {
        std::perror("file resize failed");
        return false;
    }
    return mapSize(extraMapFlags);
}

bool SharedMemoryFile::mapSize(int extraMapFlags) {
    const std::uint64_t length = Platform::lengthToMap(size_);
    void* mapping = mmap(Platform::hintForLargePages(length), length, PROT_READ | PROT_WRITE,
                         MAP_SHARED | extraMapFlags, fd, 0);
    if (mapping == MAP_FAILED) {
        address = nullptr;
        std::perror("mmap failed");
        return false;
    }
    address = static_cast<char*>(mapping);
    return true;
}

bool SharedMemoryFile::map() {
    if (fd == -1) {
        return openForMap();
    }
    if (address != nullptr && lengthOnDisk() == size_) {
        return true;
    }
    unmap();
    // Answers are small, so their pages come as they are touched.
    return resizeOpened(0, 0);
}

bool SharedMemoryFile::openForMap() {
    open();
    if (fd == -1) {
        return false;
    }
    if (size_ == 0) {
        size_ = 1;
        if (ftruncate(fd, 1) != 0) {
            std::perror("file resize failed");
        }
        // A new, empty file is deliberately mapped twice; the first mapping stays until the process ends.
        mapSize(0);
    }
    return mapSize(0);
}

void SharedMemoryFile::unmap() {
    if (address == nullptr) {
        return;
    }
    if (munmap(address, Platform::lengthToMap(size_)) != 0) {
        std::perror("Failed to unmap");
    }
    address = nullptr;
}

bool SharedMemoryFile::release() {
    unmap();
    size_ = 0;
    return true;
}

}  // namespace Morvane::ProcessBridge
