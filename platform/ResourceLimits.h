#pragma once

#include <cstdint>

namespace Morvane::Platform {

/// Built with a sanitizer: those reserve more memory than any limit allows, look for leaks from a process
/// that they make for it, and start a program that names places.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
constexpr bool sanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool sanitized = false;
#endif

/// Lowers the calling process's limits, for good: private memory and the length of files written, in bytes;
/// no core files, which would hold what the process was fed.
void limitResources(std::uint64_t memoryBytes, std::uint64_t fileBytes);

}  // namespace Morvane::Platform
