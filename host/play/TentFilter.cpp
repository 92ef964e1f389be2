#include "host/play/TentFilter.h"

#include <algorithm>
#include <cmath>

namespace Corvel {

TentFilter::TentFilter(int from, int to) {
    const double ratio = static_cast<double>(from) / to;
    const double radius = std::max(1.0, ratio);  // samples
    taps = std::min(from, static_cast<int>(std::ceil(radius * 2)));
    for (int output = 0; output < to; ++output) {
        const double centre = (output + 0.5) * ratio - 0.5;
        const int first = std::clamp(static_cast<int>(std::floor(centre - radius)) + 1, 0, from - taps);
        std::vector<double> line;
        double sum = 0;
        for (int tap = 0; tap < taps; ++tap) {
            line.push_back(std::max(0.0, 1 - std::abs(first + tap - centre) / radius));
            sum += line.back();
        }
        firsts.push_back(first);
        for (const double weight : line) {
            values.push_back(static_cast<float>(weight / sum));
        }
    }
}

}  // namespace Corvel
