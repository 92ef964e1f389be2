#include "worker/picture/ChromaReduction.h"

#include <cmath>
#include <cstddef>

#include "worker/picture/CatmullRom.h"

namespace Morvane::Worker {

ChromaReduction ChromaReduction::of(int shift, double offset) {
    ChromaReduction reduction;
    if (shift == 0)
        return reduction;
    const int scale = 1 << shift;
    reduction.shift = shift;
    reduction.first = static_cast<int>(std::floor(offset)) + 1 - 2 * scale;
    reduction.taps = 4 * scale;
    double sum = 0;
    const auto weightOf = [&](int tap) { return catmullRom((reduction.first + tap - offset) / scale); };
    for (int tap = 0; tap < reduction.taps; ++tap)
        sum += weightOf(tap);
    for (int tap = 0; tap < reduction.taps; ++tap)
        reduction.weights[static_cast<std::size_t>(tap)] = static_cast<float>(weightOf(tap) / sum);
    return reduction;
}

}  // namespace Morvane::Worker
