#pragma once

#include <string>

namespace Corvel {

/// Prints what is in an image file, or in the first file of an image sequence and which frames there are:
/// parts, layers, views and channels, as `corvel render` takes them. Throws NoSuchInput and UnreadableImage.
void printPictureInfo(const std::string& input, bool json);

}  // namespace Corvel
