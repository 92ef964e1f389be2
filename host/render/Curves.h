#pragma once

#include <string>

namespace Kex::Image {
class LUT;
}

namespace Corvel {

/// The host's curve of that name, letter case ignored. Throws Failure (Usage), which names those that there
/// are.
const Kex::Image::LUT* curveNamed(const std::string& name);

/// All names, separated by ", ".
std::string curveNames();

/// What the codec settings key `transfer` calls a movie whose values come from that curve (the names of ITU-T
/// H.273's transfer characteristics); empty where there is no such name.
std::string transferOf(const Kex::Image::LUT& curve);

}  // namespace Corvel
