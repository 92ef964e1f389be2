#include "worker/read/ChromaInterpolation.h"

#include <algorithm>
#include <cmath>

namespace Morvane::Worker {

namespace {

/// Keys' cubic convolution kernel with a = -1/2, which is Catmull and Rom's spline.
double cubic(double distance) {
    const double x = std::abs(distance);
    if (x < 1)
        return (1.5 * x - 2.5) * x * x + 1;
    if (x < 2)
        return ((-0.5 * x + 2.5) * x - 4) * x + 2;
    return 0;
}

}  // namespace

ChromaInterpolation ChromaInterpolation::of(int shift, double offset) {
    ChromaInterpolation interpolation;
    interpolation.shift = shift;
    const int phases = 1 << shift;
    for (int phase = 0; phase < phases; ++phase) {
        const double position = (phase - offset) / phases;
        for (int tap = 0; tap < taps; ++tap)
            interpolation.weights[static_cast<std::size_t>(phase)][static_cast<std::size_t>(tap)] =
                static_cast<float>(cubic(position - (tap - margin)));
    }
    return interpolation;
}

int ChromaInterpolation::mirrored(int index, int count) {
    const int inside = index < 0 ? -1 - index : index >= count ? 2 * count - 1 - index : index;
    return std::clamp(inside, 0, count - 1);
}

}  // namespace Morvane::Worker
