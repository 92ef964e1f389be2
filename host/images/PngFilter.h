#pragma once

#include <cstddef>
#include <cstdint>

namespace Corvel {

/// How many bytes after a row `undoPngFilter` may read beyond it.
constexpr std::size_t pngBytesBeyond = 8;

/// Turns a filtered row of a PNG file back into its samples, in place. `filter` is the byte before the row,
/// `pixelBytes` is 1, 2, 3, 4, 6 or 8, `above` is the row above with its samples, all 0 for the first. Both
/// have `bytes` bytes, whole pixels, and `pngBytesBeyond` more that may be read. False for a filter that
/// there is not. Source: W3C, Portable Network Graphics, second edition, 9.
bool undoPngFilter(std::uint8_t filter, std::size_t pixelBytes, std::uint8_t* row, const std::uint8_t* above,
                   std::size_t bytes);

}  // namespace Corvel
