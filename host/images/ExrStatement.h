#pragma once

#include <optional>

#include "host/images/ExrScanlines.h"
#include "host/images/PictureHeader.h"

namespace Corvel {

class ExrFile;

/// What an ordinary OpenEXR file says: its header, and the channels that make the picture.
struct ExrStatement {
    PictureHeader header;
    ExrScanlines::ChannelNames channels;
};

/// The statement of an open file whose first part has scanlines and the channels R, G, B and perhaps A;
/// nothing for files with other channels, tiles, deep samples, an orientation, or of a size that a picture
/// can't have, of which the general reader knows more. Says what the general reader says of the same file.
std::optional<ExrStatement> stateOf(const ExrFile& file);

}  // namespace Corvel
