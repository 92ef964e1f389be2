#pragma once

#include <string>

namespace Morvane::Worker {

/// "25", "23.976".
std::string rateText(double framesPerSecond);

}  // namespace Morvane::Worker
