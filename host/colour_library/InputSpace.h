#pragma once

#include <string>

#include "host/colour/ColourLibrary.h"
#include "host/colour_library/ColourConfig.h"

namespace Corvel {

/// The colour space of an input, and what says so.
struct InputSpace {
    std::string name;
    std::string reason;  ///< "by the file's chromaticities"
    std::string doubt;   ///< what the file states and the configuration has no space for; usually empty
};

/// Finds it in this order: `asked`; a file rule of the configuration other than the default one; the name of
/// a space that the file's header states; the chromaticities of its header; a movie's tags; for integers the
/// space of ordinary images (sRGB, or what the header says of their curve), where the configuration has one
/// under one of its usual names; the default rule. Throws Failure (Usage) for a space that was asked for and
/// isn't there.
InputSpace findInputSpace(const ColourConfig& config, const std::string& asked, const ColourInput& input);

}  // namespace Corvel
