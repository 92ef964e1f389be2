#pragma once

#include <vector>

#include "worker/encode/SamplePicture.h"

namespace Morvane::Worker::Trial {

/// Pixels as the host hands them over: width x height x 4 floats RGBA, top row first, premultiplied.
using Pixels = std::vector<float>;

/// The eight bars at 75 % of white, yellow, cyan, green, magenta, red, blue, black, each `width` / 8 wide.
Pixels colourBars(int width, int height);

}  // namespace Morvane::Worker::Trial
