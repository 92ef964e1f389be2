#pragma once

namespace Morvane::Worker {

/// Catmull and Rom's spline, that is Keys' cubic convolution kernel with a = -1/2: the weight of a sample at
/// `distance`, in samples. 0 from 2 on. With it chroma is made of fewer samples and of more.
double catmullRom(double distance);

}  // namespace Morvane::Worker
