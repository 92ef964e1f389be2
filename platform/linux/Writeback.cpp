#include "platform/Writeback.h"

#include <fcntl.h>

namespace Morvane::Platform {

void startWriteback(int fd, std::int64_t offset, std::int64_t length) {
    sync_file_range(fd, offset, length, SYNC_FILE_RANGE_WRITE);
}

}  // namespace Morvane::Platform
