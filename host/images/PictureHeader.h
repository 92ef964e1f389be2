#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>

#include "host/images/Picture.h"

namespace Corvel {

/// What a file says about the shot besides its pixels. The host's own keys are "input/timecode" (text such as
/// 01:00:00:00; ";" before the frames where the file says drop-frame), "quicktime/reel" and
/// "input/frame_rate" (frames a second as text); the others are the file's.
using Metadata = std::map<std::string, std::string>;

/// What an image file is, read without its pixels.
struct PictureHeader {
    Window display;          ///< what a viewer shows; its size is the frame's
    Window data;             ///< the pixels that the file has; may be smaller, larger or elsewhere
    double pixelAspect = 1;  ///< width of a pixel divided by its height
    bool hasAlpha = false;
    int bits = 8;  ///< of one sample
    bool floatingPoint = false;
    std::string
        curve;  ///< name of the curve of the stored values (Kex::Image::LUT), empty when not known here
    std::string colourSpace;  ///< as the file names it, empty where it does not
    /// CIE x and y of red, green, blue and white, where the file states them.
    std::optional<std::array<float, 8>> chromaticities;
    /// What the pixels are, in the words of ITU-T H.273 that the codec settings have ("bt2020", "smpte2084"):
    /// primaries and transfer characteristics. Of movies; empty where nothing says it.
    std::string primaries;
    std::string transfer;
    std::string picked;  ///< which of the file's channels these are, for people
    Metadata metadata;
    Metadata attributes;  ///< texts and numbers of the file's header, by their own names there
    /// The file that has attributes of which none is here, for nothing but people asks for them and reading
    /// them takes the image library (attributesOf, ImageReader.h); empty where all are here.
    std::string attributesIn;
};

}  // namespace Corvel
