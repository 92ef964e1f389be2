#pragma once

extern "C" {
#include <libavutil/rational.h>
}

namespace Morvane::Worker {

/// The exact frame rate meant by `framesPerSecond`, which crossed the bridge as a float of six digits. Rates
/// within 0.005 of 24, 30, 48, 60 or 120 times 1000/1001 are those exactly; any other is the nearest fraction
/// with a denominator up to 1000 (12.5 is 25/2), in lowest terms. Throws StatusError (BadArgument) for what
/// is no rate: not a number, below 1/1000, above 1000.
AVRational exactRate(double framesPerSecond);

}  // namespace Morvane::Worker
