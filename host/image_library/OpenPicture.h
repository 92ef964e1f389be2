#pragma once

#include <OpenImageIO/imageio.h>

#include <memory>

#include "host/images/ChannelLayout.h"
#include "host/images/PictureHeader.h"

namespace Corvel {

/// A file that the image library has open, at the picture that is wanted of it.
struct OpenPicture {
    std::unique_ptr<OIIO::ImageInput> input;
    int part = 0;
    OIIO::ImageSpec spec;
    ChannelLayout layout;  ///< in the library's order
    PictureHeader header;
};

}  // namespace Corvel
