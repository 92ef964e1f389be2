#include "worker/movie/TimeScale.h"

#include "worker/Status.h"

#include <fmt/core.h>

#include <algorithm>
#include <limits>

namespace Morvane::Worker {

TimeScale timeScaleFor(AVRational frameRate) {
    constexpr std::int64_t leastTicks = 1000;
    if (frameRate.num <= 0 || frameRate.den <= 0) {
        throw StatusError(Status::BadArgument,
                          fmt::format("{}/{} is no frame rate", frameRate.num, frameRate.den));
    }
    const std::int64_t least = std::min(frameRate.num, frameRate.den);
    const std::int64_t factor = std::max<std::int64_t>(1, (leastTicks + least - 1) / least);
    const std::int64_t perSecond = frameRate.num * factor;
    const std::int64_t perFrame = frameRate.den * factor;
    if (std::max(perSecond, perFrame) > std::numeric_limits<std::int32_t>::max()) {
        throw StatusError(Status::BadArgument, fmt::format("the frame rate {}/{} is beyond a movie's clock",
                                                           frameRate.num, frameRate.den));
    }
    return {static_cast<std::uint32_t>(perSecond), static_cast<std::uint32_t>(perFrame)};
}

}  // namespace Morvane::Worker
