#pragma once

#include <string>

namespace Corvel {

/// What image files state about themselves, as the host understands it. All functions are pure.

/// The name of the curve (Kex::Image::LUT) of a colour space as image files name it: "sRGB", "Linear",
/// "Rec709", "KodakLog", "Gamma2.2" and the like, letter case ignored. Empty for a name that is not known.
std::string curveOfColorSpace(const std::string& space);

/// Frames a second as text, empty for what is no rate.
std::string rateText(double rate);

}  // namespace Corvel
