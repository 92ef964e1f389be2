#pragma once

#include <cstddef>
#include <cstdint>

namespace Morvane::Worker {

/// Rounds `count` floats of nominal range 0 to 1 to bytes, nearest first, halves up. Beyond the range they
/// are limited; what is not a number becomes 0. Reads each float once.
void floatsToBytes(const float* floats, std::size_t count, std::uint8_t* bytes);

}  // namespace Morvane::Worker
