#pragma once

#include <optional>
#include <string>

namespace Morvane::Worker {

/// The curve that pixels went through before they came, between linear light and the values that arrive. Only
/// straight alpha needs it: the division belongs into linear light. What a movie's tags say about transfer is
/// another matter, deliberately: some curves have no tag, and the sRGB curve is tagged as BT.709.
enum class Curve {
    Srgb,     ///< IEC 61966-2-1
    Linear,   ///< none
    Rec709,   ///< ITU-R BT.709's camera curve
    Gamma18,  ///< the power 1/1.8
    Gamma22,  ///< the power 1/2.2
    Gamma24,  ///< the power 1/2.4
    Gamma28,  ///< the power 1/2.8
    Cineon,   ///< printing density: code 685 is 1, 95 is 0, 300 codes each factor of ten, of 1023
    Pq,       ///< SMPTE ST 2084; 1 is 10000 cd/m2
    Hlg,      ///< ITU-R BT.2100; 1 is the scene light that is stored as 1
};

/// "srgb", "linear", "rec709", "gamma1.8", … as the settings have it.
const char* curveName(Curve curve);
std::optional<Curve> curveNamed(const std::string& name);
/// All names, "a|b|c".
std::string curveNames();

/// Linear light of a stored value, and back. Values below that of black follow the mirror image.
double linearOf(double stored, Curve curve);
double storedOf(double linear, Curve curve);

}  // namespace Morvane::Worker
