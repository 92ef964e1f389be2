#pragma once

#include <array>
#include <string>

namespace Corvel {

/// Reads "R=beauty.red,A=matte.a" or "R,G,B,A", a list of one (grey), three or four. Throws BadPictureChoice
/// for an empty name, a name given twice and any other form.
std::array<std::string, 4> parseChannels(const std::string& text);

}  // namespace Corvel
