#pragma once

#include <cstddef>
#include <vector>

#include "platform/LargeCopy.h"
#include "worker/read/Orientation.h"
#include "worker/read/PixelRow.h"

namespace Morvane::Worker {

/// Where a picture's pixels go: `width x height` stored pixels become packed RGBA floats, turned as the movie
/// says, top row first, without padding.
struct RgbaRows {
    float* pixels;
    std::size_t width, height;  ///< as stored, before turning
    Orientation orientation;

    /// Has row `y` written by `fill(const PixelRow& row)`: straight to its place where pixels follow one
    /// another, else by way of `packed`, which gets the size it needs.
    template <class Fill>
    void write(std::size_t y, std::vector<float>& packed, const Fill& fill) const {
        const Orientation::Path path = orientation.pathOfRow(y, width, height);
        float* target = pixels + 4 * path.start;
        if (path.step == 1)
            return fill(PixelRow{target, width, isLarge()});
        packed.resize(4 * width);
        fill(PixelRow{packed.data(), width, false});
        scatter(packed, target, path.step);
    }

private:
    bool isLarge() const { return 4 * sizeof(float) * width * height >= Platform::largerThanCaches; }
    void scatter(const std::vector<float>& packed, float* target, std::ptrdiff_t step) const;
};

}  // namespace Morvane::Worker
