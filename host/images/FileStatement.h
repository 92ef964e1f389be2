#pragma once

#include <OpenImageIO/imageio.h>

#include <cstdint>
#include <string>

#include "host/images/PictureHeader.h"

namespace Corvel {

/// What an image file says about itself in its header, as the host understands it. All functions are pure.

/// The name of the curve (Kex::Image::LUT) of the values that the file stores: by the file's own statement,
/// else by its format (float and half: linear; integers: sRGB).
std::string curveOf(const OIIO::ImageSpec& spec);

/// The host's own metadata keys, each only where the file has it. Time code: SMPTE 12M as OpenEXR and DPX
/// store it. Reel: the attribute "reelName" of OpenEXR, the input device of a DPX header, where scanners and
/// conforming systems put it.
Metadata metadataOf(const OIIO::ImageSpec& spec);

/// Text of a time code in the packing of OpenEXR and DPX (SMPTE 12M binary groups, see ImfTimeCode.h): two
/// BCD digits a field, bit 6 the drop-frame flag, which gives a ";" before the frames. Empty for one that is
/// no time of day, such as the all-ones word of a DPX header that has none.
std::string timecodeText(std::uint32_t timeAndFlags);

}  // namespace Corvel
