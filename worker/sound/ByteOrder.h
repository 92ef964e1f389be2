#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Morvane::Worker {

/// Appends `count` samples to `out`, most significant byte first. Of each sample of `width` bytes in this
/// machine's order the `kept` most significant bytes are written: 3 of 4 makes 24-bit integers of 32-bit
/// ones.
void appendBigEndian(std::vector<std::uint8_t>& out, const std::uint8_t* samples, std::size_t count,
                     std::size_t width, std::size_t kept);

}  // namespace Morvane::Worker
