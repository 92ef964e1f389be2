#pragma once

#include <string>
#include <vector>

namespace Corvel {

/// A plug-in bundle in the application's PlugIns folder.
struct PlugIn {
    std::string path;     ///< of the bundle
    std::string failure;  ///< why it could not be loaded; empty for a loaded one
};

/// Loads every plug-in of the application bundle whose content folder is given, in the order of their names.
/// They register what they offer while they are loaded and stay loaded. A bundle NAME.bundle has its code in
/// Contents/MacOS/NAME.
std::vector<PlugIn> loadPlugIns(const std::string& contents);

}  // namespace Corvel
