#include "worker/output/FramePlacement.h"

#include <algorithm>
#include <cmath>

namespace Morvane::Worker {

FramePlacement FramePlacement::inside(int width, int height, int areaWidth, int areaHeight) {
    const double scale =
        std::min(static_cast<double>(areaWidth) / width, static_cast<double>(areaHeight) / height);
    const int placeWidth = std::max(1, static_cast<int>(std::lround(width * scale)));
    const int placeHeight = std::max(1, static_cast<int>(std::lround(height * scale)));
    return {(areaWidth - placeWidth) / 2, (areaHeight - placeHeight) / 2, placeWidth, placeHeight};
}

}  // namespace Morvane::Worker
