#pragma once

#include <memory>
#include <string>

#include "host/colour/ColourLibrary.h"

namespace Corvel {

/// What ColourLibrary::openConversion promises, by means of OpenColorIO.
std::shared_ptr<const ColourConversion> makeConversion(const std::string& configPath,
                                                       const ColourRequest& request,
                                                       const ColourInput& input);

}  // namespace Corvel
