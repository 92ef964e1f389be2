#pragma once

#include <cstdint>

namespace Morvane::Platform {

/// Lowers the calling process's limits, for good: private memory and the length of files written, in bytes;
/// no core files, which would hold what the process was fed.
void limitResources(std::uint64_t memoryBytes, std::uint64_t fileBytes);

}  // namespace Morvane::Platform
