#pragma once

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace Morvane::Worker {

/// The one decision about colour. It drives the conversion matrix, the encoder's context, every frame's tags
/// and, through the codec parameters, the movie's `colr` atom, so that these cannot disagree. The numbers are
/// those of ITU-T H.273, which libav and QuickTime share.
struct ColourDecision {
    AVColorPrimaries primaries = AVCOL_PRI_BT709;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_BT709;
    AVColorSpace matrix = AVCOL_SPC_BT709;  ///< RGB pictures: only the tag; nothing is multiplied
    AVColorRange range = AVCOL_RANGE_MPEG;

    bool operator==(const ColourDecision&) const = default;
};

/// What becomes of the alpha channel. Pixels arrive premultiplied: multiplied in linear light, then curved.
enum class AlphaMode {
    None,           ///< dropped, colours untouched: the picture over black
    Straight,       ///< divided out again in linear light, 0 where alpha is 0
    Premultiplied,  ///< kept, colours untouched
};

/// "none", "straight" or "premultiplied".
const char* alphaModeName(AlphaMode mode);

}  // namespace Morvane::Worker
