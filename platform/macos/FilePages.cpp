#include "platform/FilePages.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
    const std::uint64_t allocated = static_cast<std::uint64_t>(status.st_blocks) * statBlockSize;
    if (allocated < length) {
        // Measured from the physical end of the file, so only what is missing is asked for.
        fstore_t store{};
        store.fst_flags = F_ALLOCATEALL;
        store.fst_posmode = F_PEOFPOSMODE;
        store.fst_length = static_cast<off_t>(length - allocated);
        if (fcntl(fd, F_PREALLOCATE, &store) == -1) {
            return false;
        }
    }
    return fileLength >= length || ftruncate(fd, static_cast<off_t>(length)) == 0;
}

int populatePagesFlag() {
    return 0;
}

std::uint64_t lengthToMap(std::uint64_t length) {
    return length;
}

void* hintForLargePages(std::uint64_t) {
    return nullptr;
}

}  // namespace Morvane::Platform
