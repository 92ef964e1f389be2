#pragma once

#include <cstddef>

namespace Corvel {

/// Takes `count` interleaved pixels of `channels` floats apart: planes[i] gets the floats at place i of each
/// pixel, or is null where they are not wanted. Pixels of 3 and 4 floats go through the processor's vectors.
/// The planes do not overlap `pixels`.
void splitPixels(const float* pixels, int channels, std::size_t count, float* const* planes);

}  // namespace Corvel
