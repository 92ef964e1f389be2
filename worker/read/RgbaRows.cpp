#include "worker/read/RgbaRows.h"

#include <algorithm>

namespace Morvane::Worker {

void RgbaRows::scatter(const std::vector<float>& packed, float* target, std::ptrdiff_t step) const {
    for (std::size_t x = 0; x < width; ++x, target += 4 * step)
        std::copy_n(packed.data() + 4 * x, 4, target);
}

}  // namespace Morvane::Worker
