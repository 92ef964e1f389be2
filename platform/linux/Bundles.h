#pragma once

#include <string>
#include <vector>

namespace Morvane::Platform {

/// A folder that macOS would call a bundle.
struct Bundle {
    std::string path;        ///< absolute, without a "/" at its end
    std::string identifier;  ///< CFBundleIdentifier of its Contents/Info.plist; empty without one
};

/// The CFBundleIdentifier in a property list of any form; empty where there is none.
std::string identifierInPlist(const std::string& text);

/// The bundles of this process at this moment: the one that the running executable lies in (its own folder
/// when it lies in none), then those of the loaded plug-ins.
std::vector<Bundle> loadedBundles();

}  // namespace Morvane::Platform
