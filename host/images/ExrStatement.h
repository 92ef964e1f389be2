#pragma once

#include <optional>

#include "host/images/ExrScanlines.h"
#include "host/images/PictureChoice.h"
#include "host/images/PictureHeader.h"

namespace Corvel {

class ExrFile;

/// What an ordinary part of an OpenEXR file says: its header, and the channels that make the picture.
struct ExrStatement {
    PictureHeader header;
    int part = 0;
    ExrScanlines::ChannelNames channels;
};

/// The statement of the picture that was chosen of an open file, whose contents are given; nothing for tiles,
/// deep samples, an orientation, or a size that a picture can't have, of which the general reader knows more.
/// Says what the general reader says of the same picture.
std::optional<ExrStatement> stateOf(const ExrFile& file, const FileContents& contents,
                                    const ChosenPicture& chosen);

}  // namespace Corvel
