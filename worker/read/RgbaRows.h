#pragma once

#include <cstddef>
#include <vector>

#include "worker/read/Orientation.h"

namespace Morvane::Worker {

/// Where a picture's pixels go: `width x height` stored pixels become packed RGBA floats, turned as the movie
/// says, top row first, without padding.
struct RgbaRows {
    float* pixels;
    std::size_t width, height;  ///< as stored, before turning
    Orientation orientation;

    /// Has row `y` written by `fill(float* rgba)`: straight to its place where pixels follow one another,
    /// else by way of `packed`, which gets the size it needs.
    template <class Fill>
    void write(std::size_t y, std::vector<float>& packed, const Fill& fill) const {
        const Orientation::Path path = orientation.pathOfRow(y, width, height);
        float* target = pixels + 4 * path.start;
        if (path.step == 1)
            return fill(target);
        packed.resize(4 * width);
        fill(packed.data());
        scatter(packed, target, path.step);
    }

private:
    void scatter(const std::vector<float>& packed, float* target, std::ptrdiff_t step) const;
};

}  // namespace Morvane::Worker
