#pragma once

extern "C" {
#include <libavutil/frame.h>
}

namespace Morvane::Worker {

/// How a decoded picture's samples are to be understood.
struct PictureColour {
    AVColorSpace matrix = AVCOL_SPC_BT709;  ///< of YCbCr pictures; never unspecified
    bool fullRange = false;
    AVChromaLocation chromaLocation = AVCHROMA_LOC_LEFT;  ///< never unspecified

    /// What the picture says of itself; where it says nothing, what its kind and size make likely: RGB and
    /// grey are full range; YCbCr is video range, with BT.601's matrix up to standard definition and BT.709's
    /// beyond.
    static PictureColour of(const AVFrame& frame);
};

}  // namespace Morvane::Worker
