#pragma once

#include <string>

#include "host/images/ImageWriter.h"
#include "host/images/Picture.h"
#include "host/images/PictureHeader.h"

namespace Corvel {

/// What writeImage (host/images/ImageWriter.h) promises, by means of the image library.
void writeThroughLibrary(const std::string& path, const Picture& picture, const PictureHeader& header,
                         ImageValues values);

}  // namespace Corvel
