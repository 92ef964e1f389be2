#include "host/images/Picture.h"

#include <algorithm>

namespace Corvel {

void Picture::reset(int width, int height, int channels) {
    const std::size_t needed = bytes(width, height, channels) / sizeof(float);
    if (needed > capacity) {
        samples.reset();
        capacity = 0;
        // Not make_unique: that would write every page once before the reader does.
        samples.reset(new float[needed]);
        capacity = needed;
    }
    width_ = width;
    height_ = height;
    channels_ = channels;
}

void Picture::clear() {
    std::fill_n(samples.get(), planeStride() * static_cast<std::size_t>(channels_), 0.0f);
}

std::size_t Picture::bytes(int width, int height, int channels) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
           static_cast<std::size_t>(channels) * sizeof(float);
}

}  // namespace Corvel
