#include "tests/integration/codecs/NaturalPicture.h"

#include <algorithm>

namespace Morvane::Worker::Trial {

Pixels colourBars(int width, int height) {
    Pixels pixels(static_cast<std::size_t>(width) * height * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int bar = 7 - std::min(7, 8 * x / width);
            float* pixel = &pixels[4 * (static_cast<std::size_t>(y) * width + x)];
            pixel[0] = bar & 2 ? 0.75F : 0.0F;
            pixel[1] = bar & 4 ? 0.75F : 0.0F;
            pixel[2] = bar & 1 ? 0.75F : 0.0F;
            pixel[3] = 1.0F;
        }
    return pixels;
}

}  // namespace Morvane::Worker::Trial
