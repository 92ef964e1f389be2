#include "worker/movie_tool/RateText.h"

#include <fmt/core.h>

#include <cmath>

namespace Morvane::Worker {

std::string rateText(double framesPerSecond) {
    const bool whole = framesPerSecond == std::floor(framesPerSecond);
    return whole ? fmt::format("{:.0f}", framesPerSecond) : fmt::format("{:.3f}", framesPerSecond);
}

}  // namespace Morvane::Worker
