#pragma once

#include <vector>

namespace Morvane::Worker::Trial {

/// Pixels as the host hands them over: width x height x 4 floats RGBA, top row first, premultiplied.
using Pixels = std::vector<float>;

/// A picture with the statistics of a photograph: detail that falls off with its frequency, less of it in the
/// colours than in the light, soft and hard edges, and film grain. `frame` moves it. With `alpha` a soft disc
/// shows it over transparency.
Pixels naturalPicture(int width, int height, int frame, bool alpha);

/// The eight bars at 75 % of white, yellow, cyan, green, magenta, red, blue, black, each `width` / 8 wide.
Pixels colourBars(int width, int height);

}  // namespace Morvane::Worker::Trial
