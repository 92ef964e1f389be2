#pragma once

#include <cstdint>

namespace Morvane::Platform {

/// What limits (of the process, of its user, of the machine) still leave to the calling process. Asked before
/// something that cannot fail well. Any thread; another thread may have taken the room by the next moment.

/// Whether `count` more descriptors can be had at once. Opens and closes them.
bool hasRoomForDescriptors(int count);

/// Whether `bytes` more of address space can be had in one piece. No memory is touched.
bool hasRoomForMappings(std::uint64_t bytes);

}  // namespace Morvane::Platform
