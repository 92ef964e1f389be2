#include "platform/Room.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <vector>

namespace Morvane::Platform {

bool hasRoomForDescriptors(int count) {
    std::vector<int> opened;
    for (int descriptor = 0; static_cast<int>(opened.size()) < count && descriptor != -1;) {
        descriptor = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (descriptor != -1)
            opened.push_back(descriptor);
    }
    for (const int descriptor : opened)
        close(descriptor);
    return static_cast<int>(opened.size()) == count;
}

bool hasRoomForMappings(std::uint64_t bytes) {
    void* const reserved =
        mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return reserved != MAP_FAILED && munmap(reserved, bytes) == 0;
}

}  // namespace Morvane::Platform
