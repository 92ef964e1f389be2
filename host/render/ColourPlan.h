#pragma once

#include <memory>

#include "host/colour/ColourLibrary.h"
#include "host/render/RenderRequest.h"

namespace Corvel {

/// The configuration that a request means: the file that it names, the one that comes with the application
/// for "corvel", else that of the environment variable OCIO, else the application's. Throws Failure
/// (HelperFailed) where the application's is meant and the program does not run from its bundle.
std::string colourConfigPath(const ColourRequest& request);

/// Settles how the input's colours become the movie's, and says so in the log; null where no colour
/// management is asked for. Throws Failure: Usage for what the configuration does not have and for options
/// that exclude each other, InputUnreadable for a configuration that cannot be used.
std::shared_ptr<const ColourConversion> planColour(const RenderRequest& request, const PictureHeader& header);

}  // namespace Corvel
