#pragma once

#include <cstddef>

#include "worker/read/Orientation.h"

namespace Morvane::Worker {

/// Where a picture's pixels go: `width x height` stored pixels become packed RGBA floats, turned as the movie
/// says, top row first, without padding.
struct RgbaRows {
    float* pixels;
    std::size_t width, height;  ///< as stored, before turning
    Orientation orientation;

    /// Stores row `y`. `alpha` may be null, for 1.
    void store(std::size_t y, const float* red, const float* green, const float* blue,
               const float* alpha) const;
};

}  // namespace Morvane::Worker
