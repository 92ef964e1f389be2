#include "host/geometry/Resampling.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace Corvel {
namespace {

constexpr double pi = 3.14159265358979323846;

// The family of Mitchell and Netravali.
double cubic(double x, double b, double c) {
    if (x < 1) {
        return ((12 - 9 * b - 6 * c) * x * x * x + (-18 + 12 * b + 6 * c) * x * x + (6 - 2 * b)) / 6;
    }
    return x >= 2 ? 0
                  : ((-b - 6 * c) * x * x * x + (6 * b + 30 * c) * x * x + (-12 * b - 48 * c) * x +
                     (8 * b + 24 * c)) /
                        6;
}

double sinc(double x) {
    return x < 1e-9 ? 1 : std::sin(pi * x) / (pi * x);
}

double reachOf(Filter filter) {
    switch (filter) {
        case Filter::Nearest:
        case Filter::Box:
            return 0.5;
        case Filter::Triangle:
            return 1;
        case Filter::Mitchell:
        case Filter::CatmullRom:
            return 2;
        case Filter::Lanczos:
            return 3;
    }
    return 0;
}

// The weight of a sample `distance` samples of the output away, at most the filter's reach.
double shapeOf(Filter filter, double distance) {
    switch (filter) {
        case Filter::Triangle:
            return std::max(1 - distance, 0.0);
        case Filter::Mitchell:
            return cubic(distance, 1.0 / 3, 1.0 / 3);
        case Filter::CatmullRom:
            return cubic(distance, 0, 0.5);
        case Filter::Lanczos:
            return distance >= 3 ? 0 : sinc(distance) * sinc(distance / 3);
        default:
            return 0;
    }
}

// How much of sample `index` lies within `ratio` samples around `centre`.
double coverage(int index, double centre, double ratio) {
    const double begin = std::max(index - 0.5, centre - ratio / 2);
    const double end = std::min(index + 0.5, centre + ratio / 2);
    return std::max(end - begin, 0.0);
}

}  // namespace

Resampling::Resampling(const Span& span, int available, Filter filter) {
    const double ratio = span.length / span.count;
    const double widening = std::max(ratio, 1.0);
    const bool copy = span.isCopy() || filter == Filter::Nearest;
    const double reach =
        filter == Filter::Box ? (ratio + 1) / 2 : reachOf(filter) * widening;  // samples of the source
    taps_ = copy ? 1 : std::min(available, static_cast<int>(std::ceil(reach * 2)));
    held_ = !copy && reachOf(filter) > 1;
    std::vector<double> line(static_cast<std::size_t>(taps_), 1.0);
    for (int output = 0; output < span.count; ++output) {
        const double centre = span.first + (output + 0.5) * ratio - 0.5;
        const double begin = copy ? std::floor(centre + 0.5) : std::floor(centre - reach) + 1;
        const int first = static_cast<int>(std::clamp(begin, 0.0, static_cast<double>(available - taps_)));
        for (int tap = 0; tap < taps_ && !copy; ++tap) {
            line[static_cast<std::size_t>(tap)] =
                filter == Filter::Box ? coverage(first + tap, centre, ratio)
                                      : shapeOf(filter, std::abs(first + tap - centre) / widening);
        }
        const double sum = std::accumulate(line.begin(), line.end(), 0.0);
        firsts_.push_back(first);
        std::transform(line.begin(), line.end(), std::back_inserter(weights_),
                       [sum](double weight) { return static_cast<float>(weight / sum); });
    }
}

}  // namespace Corvel
