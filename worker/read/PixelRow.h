#pragma once

#include <cstddef>

namespace Morvane::Worker {

/// Where a row of pixels goes, as packed RGBA floats.
struct PixelRow {
    float* rgba;
    std::size_t width;
    bool pastCaches;  ///< part of a picture too large for them; see Platform::largerThanCaches
};

}  // namespace Morvane::Worker
