#pragma once

#include <string>

namespace Morvane::QuickTime {

/// A fresh name for a bridge: a random UUID's 32 hexadecimal digits.
std::string makeBridgeName();

}  // namespace Morvane::QuickTime
