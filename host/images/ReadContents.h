#pragma once

#include <string>

#include "host/images/FileContents.h"

namespace Corvel {

/// What there is in an image file: every part with its channels. Throws UnreadableImage.
FileContents readContents(const std::string& path);

/// Whether the path names a kind of file that the image library reads, by its ending. Movies, which it may
/// know as well, are none of them.
bool isPictureName(const std::string& path);

}  // namespace Corvel
