#pragma once

#include "worker/codec/Curve.h"

#include <cstddef>

namespace Morvane::Worker {

/// Divides alpha out of a row of pixels: takes the curve off, divides in linear light (0 where alpha is 0),
/// puts the curve on again. `rgba` and `out` hold `width` x 4 floats and may be the same; alpha is copied.
/// Colours where alpha is 1 stay as they are.
void divideAlphaOut(const float* rgba, float* out, std::size_t width, Curve curve);

}  // namespace Morvane::Worker
