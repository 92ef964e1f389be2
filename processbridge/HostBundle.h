#pragma once

#include <string>

namespace Morvane::ProcessBridge {

/// The host application's bundle folder followed by "/Contents". The bundle is the loaded one with the host's
/// identifier, or else the only loaded bundle that is not the system's. Anything else ends the process: the
/// candidates on standard error, then `abort`.
std::string hostBundleContentsPath();

}  // namespace Morvane::ProcessBridge
