#include "host/play/FrameScaler.h"

#include <algorithm>

namespace Corvel {

FrameScaler::FrameScaler(int fromWidth, int fromHeight, int toWidth, int toHeight)
    : fromWidth(fromWidth),
      fromHeight(fromHeight),
      toWidth(toWidth),
      toHeight(toHeight),
      across(fromWidth, toWidth),
      down(fromHeight, toHeight),
      channel(static_cast<std::size_t>(fromWidth)),
      mixed(static_cast<std::size_t>(fromWidth) * 4) {}

bool FrameScaler::isFor(int otherFromWidth, int otherFromHeight, int otherToWidth, int otherToHeight) const {
    return fromWidth == otherFromWidth && fromHeight == otherFromHeight && toWidth == otherToWidth &&
           toHeight == otherToHeight;
}

/// The rows that make row `y`, in their proportions, still of the old width.
void FrameScaler::mixRows(const Picture& picture, int y) {
    const float* weights = down.weights(y);
    for (int plane = 0; plane < 3; ++plane) {
        std::fill(channel.begin(), channel.end(), 0.0F);
        for (int tap = 0; tap < down.count(); ++tap) {
            const float weight = weights[tap];
            const float* row = picture.row(plane, down.first(y) + tap);
            if (weight == 0) {
                continue;
            }
            for (std::size_t x = 0; x < channel.size(); ++x) {
                channel[x] += weight * row[x];
            }
        }
        for (std::size_t x = 0; x < channel.size(); ++x) {
            mixed[x * 4 + static_cast<std::size_t>(plane)] = channel[x];
        }
    }
}

void FrameScaler::scaleRow(const Picture& picture, int y, float* rgba) {
    mixRows(picture, y);
    for (int x = 0; x < toWidth; ++x) {
        const float* weights = across.weights(x);
        const float* pixel = mixed.data() + static_cast<std::size_t>(across.first(x)) * 4;
        float sum[4] = {};
        for (int tap = 0; tap < across.count(); ++tap, pixel += 4) {
            // All four, so that the machine can do them at once.
            for (int sample = 0; sample < 4; ++sample) {
                sum[sample] += weights[tap] * pixel[sample];
            }
        }
        std::copy_n(sum, 4, rgba + static_cast<std::size_t>(x) * 4);
    }
}

}  // namespace Corvel
