#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Corvel {

/// What a person asks of colour management. What is empty is settled by the configuration and the input.
struct ColourRequest {
    std::string config;  ///< a configuration file, or "corvel" for the one that comes with the application
    std::string inputSpace;
    std::string display;
    std::string view;
    std::string outputSpace;  ///< instead of a display and its view
    std::string looks;        ///< instead of the view's own, as OpenColorIO writes them: "+warm, -grain"
    std::vector<std::pair<std::string, std::string>> context;  ///< variables of the configuration

    /// Whether anything of it was asked for; without that, no colours are managed.
    bool wanted() const {
        return !(config.empty() && inputSpace.empty() && display.empty() && view.empty() &&
                 outputSpace.empty() && looks.empty() && context.empty());
    }
};

}  // namespace Corvel
