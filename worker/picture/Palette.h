#pragma once

#include <array>
#include <cstdint>

namespace Morvane::Worker {

/// The one palette of pictures with 256 colours: a cube of 6 levels a channel (indices 0 to 215: red x 36 +
/// green x 6
/// + blue), then 40 greys between its steps. Entries are 0xAARRGGBB, opaque, as libav keeps palettes.
const std::array<std::uint32_t, 256>& fixedPalette();

/// The index of the palette's colour nearest to red, green and blue, each 0…1.
std::uint8_t nearestPaletteIndex(float red, float green, float blue);

}  // namespace Morvane::Worker
