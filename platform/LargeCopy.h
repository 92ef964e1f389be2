#pragma once

#include <cstddef>

namespace Morvane::Platform {

/// A picture of so many bytes has left the processor's caches, most of it, before another process reads it.
/// So it is stored past them: its memory is not read before it is written to, which takes a third off the
/// time, and what else is in the caches stays there.
constexpr std::size_t largerThanCaches = std::size_t{8} << 20;

/// Copies `bytes` bytes between places that do not overlap, past the caches where they are so many.
void copyLarge(void* target, const void* source, std::size_t bytes);

}  // namespace Morvane::Platform
