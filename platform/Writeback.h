#pragma once

#include <cstdint>

namespace Morvane::Platform {

/// Asks the system to begin bringing `length` bytes of the open file, from `offset` on, to the disk, so that
/// a later `fsync` finds little left to do. A hint: nothing is promised, nothing waited for but room in the
/// disk's queue, and nothing reported. Does nothing where the system knows no such call.
void startWriteback(int fd, std::int64_t offset, std::int64_t length);

}  // namespace Morvane::Platform
