#include "platform/FilePages.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>

namespace Morvane::Platform {

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

}  // namespace Morvane::Platform
