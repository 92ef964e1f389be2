#include "worker/read/RgbaRows.h"

#include <hwy/highway.h>

namespace Morvane::Worker {

namespace {

namespace hn = hwy::HWY_NAMESPACE;

/// The usual case: pixels one after the other.
void interleave(float* target, std::size_t count, const float* red, const float* green, const float* blue,
                const float* alpha) {
    const hn::ScalableTag<float> lanes;
    const std::size_t step = hn::Lanes(lanes);
    const auto opaque = hn::Set(lanes, 1.0f);
    std::size_t x = 0;
    for (; x + step <= count; x += step)
        hn::StoreInterleaved4(hn::LoadU(lanes, red + x), hn::LoadU(lanes, green + x),
                              hn::LoadU(lanes, blue + x),
                              alpha == nullptr ? opaque : hn::LoadU(lanes, alpha + x), lanes, target + 4 * x);
    for (; x < count; ++x) {
        target[4 * x] = red[x];
        target[4 * x + 1] = green[x];
        target[4 * x + 2] = blue[x];
        target[4 * x + 3] = alpha == nullptr ? 1.0f : alpha[x];
    }
}

}  // namespace

void RgbaRows::store(std::size_t y, const float* red, const float* green, const float* blue,
                     const float* alpha) const {
    const Orientation::Path path = orientation.pathOfRow(y, width, height);
    float* target = pixels + 4 * path.start;
    if (path.step == 1)
        return interleave(target, width, red, green, blue, alpha);
    for (std::size_t x = 0; x < width; ++x, target += 4 * path.step) {
        target[0] = red[x];
        target[1] = green[x];
        target[2] = blue[x];
        target[3] = alpha == nullptr ? 1.0f : alpha[x];
    }
}

}  // namespace Morvane::Worker
