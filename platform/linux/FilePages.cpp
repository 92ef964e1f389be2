#include "platform/FilePages.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <system_error>
#include <thread>
#include <vector>

namespace Morvane::Platform {

namespace {

constexpr std::uint64_t largePage = std::uint64_t{2} << 20;
/// Smaller mappings have less to gain than the hint costs.
constexpr std::uint64_t leastLength = 4 * largePage;

#ifndef MADV_COLLAPSE
constexpr int MADV_COLLAPSE = 25;  // Linux 6.1; earlier ones refuse it
#endif

/// Whether the file system has so much room left. Without it nothing should be taken from others only to find
/// that it is not enough.
bool hasRoomFor(int fd, std::uint64_t bytes) {
    struct statvfs system {};
    return fstatvfs(fd, &system) == 0 && bytes / system.f_frsize < system.f_bavail;
}

void collapse(std::byte* place, std::uint64_t length) {
    // Where it fails everything stays as it is.
    static_cast<void>(madvise(place, length, MADV_COLLAPSE));
}

/// By several threads: nearly all of the time goes into making the pages 0, which takes thirty times as long
/// on a virtual machine that has yet to be given the memory.
void collapseSideBySide(std::byte* place, std::uint64_t length) {
    constexpr std::uint64_t leastPart = 4 * largePage;
    constexpr std::uint64_t mostParts = 4;
    const std::uint64_t parts = std::clamp<std::uint64_t>(
        length / leastPart, 1, std::min<std::uint64_t>(std::thread::hardware_concurrency(), mostParts));
    const std::uint64_t part = (length / parts + largePage - 1) / largePage * largePage;
    std::vector<std::thread> others;
    std::uint64_t begin = 0;
    try {
        for (; begin + part < length; begin += part) {
            others.emplace_back(collapse, place + begin, part);
        }
    } catch (const std::system_error&) {
        // No more threads are to be had: this one does the rest.
    }
    collapse(place + begin, length - begin);
    for (std::thread& other : others) {
        other.join();
    }
}

/// The file's pages as large ones, as far as the file system and the system have them; nothing is lost where
/// they have none, since the rest comes in small ones. A file in memory takes a large page only when it is
/// told to, and only where a small one is already, whose content it then holds. As few calls as can be: each
/// waits until every processor has had a moment for it, which takes long while others are busy.
void allocateLargePages(int fd, std::uint64_t fileLength) {
    const std::uint64_t length = lengthToMap(fileLength);
    if (fileLength < leastLength || !hasRoomFor(fd, length)) {
        return;
    }
    void* const place = mmap(hintForLargePages(length), length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (place == MAP_FAILED) {
        return;
    }
    std::uint64_t begin = 0;
    while (begin < fileLength && fallocate(fd, 0, static_cast<off_t>(begin), 1) == 0) {
        begin += largePage;
    }
    collapseSideBySide(static_cast<std::byte*>(place), begin);
    munmap(place, length);
}

}  // namespace

bool allocateFileBlocks(int fd, std::uint64_t length) {
    constexpr std::uint64_t statBlockSize = 512;
    struct stat status {};
    if (length == 0) {
        return true;
    }
    if (fstat(fd, &status) != 0) {
        return false;
    }
    const auto fileLength = static_cast<std::uint64_t>(status.st_size);
    const bool complete = static_cast<std::uint64_t>(status.st_blocks) * statBlockSize >= fileLength;
    if (complete && fileLength >= length) {
        return true;
    }
    allocateLargePages(fd, fileLength);
    int error = 0;
    do {
        error = posix_fallocate(fd, 0, static_cast<off_t>(length));
    } while (error == EINTR);
    errno = error;
    return error == 0;
}

int populatePagesFlag() {
    return MAP_POPULATE;
}

std::uint64_t lengthToMap(std::uint64_t length) {
    return length < leastLength ? length : (length + largePage - 1) / largePage * largePage;
}

void* hintForLargePages(std::uint64_t length) {
    if (length < leastLength) {
        return nullptr;
    }
    // A place where there is room, given back at once. Should another thread be quicker, the kernel takes
    // another place.
    const std::uint64_t room = length + largePage;
    void* const place = mmap(nullptr, room, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (place == MAP_FAILED) {
        return nullptr;
    }
    munmap(place, room);
    const std::uint64_t beyond = reinterpret_cast<std::uintptr_t>(place) % largePage;
    return static_cast<char*>(place) + (largePage - beyond) % largePage;
}

}  // namespace Morvane::Platform
