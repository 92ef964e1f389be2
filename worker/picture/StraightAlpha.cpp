#include "worker/picture/StraightAlpha.h"

namespace Morvane::Worker {

void divideAlphaOut(const float* rgba, float* out, std::size_t width, Curve curve) {
    const auto black = static_cast<float>(storedOf(0, curve));
    for (std::size_t i = 0; i < 4 * width; i += 4) {
        const double alpha = rgba[i + 3];
        for (std::size_t channel = i; channel < i + 3; ++channel) {
            if (alpha == 1)
                out[channel] = rgba[channel];
            else if (alpha > 0)
                out[channel] = static_cast<float>(storedOf(linearOf(rgba[channel], curve) / alpha, curve));
            else
                out[channel] = black;
        }
        out[i + 3] = rgba[i + 3];
    }
}

}  // namespace Morvane::Worker
