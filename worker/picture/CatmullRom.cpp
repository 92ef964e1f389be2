#include "worker/picture/CatmullRom.h"

#include <cmath>

namespace Morvane::Worker {

double catmullRom(double distance) {
    const double x = std::abs(distance);
    if (x < 1)
        return (1.5 * x - 2.5) * x * x + 1;
    if (x < 2)
        return ((-0.5 * x + 2.5) * x - 4) * x + 2;
    return 0;
}

}  // namespace Morvane::Worker
