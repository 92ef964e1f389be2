#pragma once

#include <OpenImageIO/imageio.h>

#include <string>

#include "host/images/FileContents.h"

namespace Corvel {

/// How many of a file's pictures are looked at. Going through the pages of a file may take as long as reading
/// them.
enum class Parts { First, All };

/// What there is in an open file, which may be left at any of its pictures. Of OpenEXR files it is what our
/// own reader says. Throws nothing: what the library cannot tell is left out.
FileContents libraryContents(const std::string& path, OIIO::ImageInput& input, Parts parts);

}  // namespace Corvel
