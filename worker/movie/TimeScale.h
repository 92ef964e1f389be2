#pragma once

extern "C" {
#include <libavutil/rational.h>
}

#include <cstdint>

namespace Morvane::Worker {

/// How a movie counts time: whole ticks, so that a frame's duration is exact and nothing drifts.
struct TimeScale {
    std::uint32_t ticksPerSecond = 0;
    std::uint32_t ticksPerFrame = 0;
};

/// The time scale for an exact frame rate: the rate's own fraction, widened by a whole factor until both
/// numbers are at least 1000 (24000/1001 stays, 24/1 becomes 24000/1000), since readers round durations to
/// ticks. Throws StatusError (BadArgument) for a rate that is not above 0 or too large for the numbers' 32
/// bits.
TimeScale timeScaleFor(AVRational frameRate);

}  // namespace Morvane::Worker
