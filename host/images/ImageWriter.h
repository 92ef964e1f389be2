#pragma once

#include <stdexcept>
#include <string>

#include "host/images/Picture.h"
#include "host/images/PictureHeader.h"

namespace Corvel {

/// An image file that cannot be written. `what()` names the file and gives the reason, in one line.
class UnwritableImage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The endings that `writeImage` writes, for messages: ".exr, .dpx, .png, .tif".
const char* writableImageEndings();

/// Whether `writeImage` writes files of that ending.
bool isWritableImageName(const std::string& path);

/// What the samples of a picture that is written are.
enum class ImageValues {
    LinearLight,        ///< the file gets its format's own curve
    AsTheyAre,          ///< the file gets these very values, which are those of some display or colour space
    StraightAsTheyAre,  ///< the same, and the colours are not multiplied by alpha; for .png and .tif
};

/// Writes a picture, usually in linear light, premultiplied, as a file of the kind that its ending says:
///
/// | ending      | samples            | values | alpha         |
/// |-------------|--------------------|--------|---------------|
/// | .exr        | half float, ZIP    | linear | premultiplied |
/// | .dpx        | 10-bit integer     | sRGB   | premultiplied |
/// | .png        | 16-bit integer     | sRGB   | straight      |
/// | .tif, .tiff | 16-bit integer     | sRGB   | premultiplied |
///
/// Values that are kept as they are become integers as those of a movie do: by rounding to the nearest one,
/// half to even. A PNG file says what they are where `header` has primaries and transfer (chunk cICP, for
/// sRGB the chunk sRGB too).
///
/// Time code, reel, frame rate and pixel aspect of `header` go into the file's own fields, where its format
/// has them. The file appears under its name only when it is whole; an existing one is replaced. Throws
/// UnwritableImage.
void writeImage(const std::string& path, const Picture& picture, const PictureHeader& header,
                ImageValues values = ImageValues::LinearLight);

}  // namespace Corvel
