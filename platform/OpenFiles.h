#pragma once

#include <string>
#include <vector>

namespace Morvane::Platform {

/// The paths of the files that the calling process has open, in no order; descriptors without a path are left
/// out. Any thread.
std::vector<std::string> openFilePaths();

}  // namespace Morvane::Platform
