#include "worker/read/ChromaInterpolation.h"

#include <algorithm>

#include "worker/picture/CatmullRom.h"

namespace Morvane::Worker {

ChromaInterpolation ChromaInterpolation::of(int shift, double offset) {
    ChromaInterpolation interpolation;
    interpolation.shift = shift;
    const int phases = 1 << shift;
    for (int phase = 0; phase < phases; ++phase) {
        const double position = (phase - offset) / phases;
        for (int tap = 0; tap < taps; ++tap)
            interpolation.weights[static_cast<std::size_t>(phase)][static_cast<std::size_t>(tap)] =
                static_cast<float>(catmullRom(position - (tap - margin)));
    }
    return interpolation;
}

int ChromaInterpolation::mirrored(int index, int count) {
    const int inside = index < 0 ? -1 - index : index >= count ? 2 * count - 1 - index : index;
    return std::clamp(inside, 0, count - 1);
}

}  // namespace Morvane::Worker
