#pragma once

#include <vector>

namespace Morvane::Worker {

/// A picture with the statistics of a photograph: detail that falls off with its frequency, less of it in the
/// colours than in the light, soft and hard edges, and film grain. As a host hands frames over: width x
/// height x 4 floats RGBA, top row first, premultiplied. `frame` moves it. With `alpha` a soft disc shows it
/// over transparency.
std::vector<float> naturalPicture(int width, int height, int frame, bool alpha);

}  // namespace Morvane::Worker
