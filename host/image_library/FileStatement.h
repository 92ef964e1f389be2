#pragma once

#include <OpenImageIO/imageio.h>

#include <array>
#include <optional>
#include <string>

#include "host/images/PictureHeader.h"

namespace Corvel {

/// What an image file says about itself in its header, as the host understands it. All functions are pure.

/// The name of the curve (Kex::Image::LUT) of the values that the file stores: by the file's own statement,
/// else by its format (float and half: linear; integers: sRGB).
std::string curveOf(const OIIO::ImageSpec& spec);

/// The name that the file itself gives to the colour space of its values, empty where it gives none. The
/// library's own guess by the format is no statement of the file.
std::string colourSpaceOf(const OIIO::ImageSpec& spec);
/// As PictureHeader has them.
std::optional<std::array<float, 8>> chromaticitiesOf(const OIIO::ImageSpec& spec);

/// The host's own metadata keys, each only where the file has it. Time code: SMPTE 12M as OpenEXR and DPX
/// store it. Reel: the attribute "reelName" of OpenEXR, the input device of a DPX header, where scanners and
/// conforming systems put it.
Metadata metadataOf(const OIIO::ImageSpec& spec);

/// Takes away what the library reads from the part of a DPX header that is for film and television, for files
/// that leave that part out: there it reads pixels.
void forgetIndustryPart(OIIO::ImageSpec& spec);

/// The texts and numbers of the file's header, by the names that the library gives them.
Metadata attributesOf(const OIIO::ImageSpec& spec);

}  // namespace Corvel
