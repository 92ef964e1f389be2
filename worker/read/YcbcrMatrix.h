#pragma once

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace Morvane::Worker {

/// What turns samples of Y, Cb and Cr into red, green and blue, nominally 0 to 1.
struct YcbcrMatrix {
    /// What a channel has of chroma, for each sample value off neutral.
    struct Chroma {
        float cb, cr;
    };

    float black;    ///< sample value of luma
    float range;    ///< sample values from black to white
    float neutral;  ///< sample value of chroma
    Chroma red, green, blue;

    /// Of samples of `bits` bits (ITU-T H.273, 8.3). Throws StatusError (NotSupportedByCodec) for what needs
    /// more than a matrix; but the constant-luminance form is taken for the usual one, which is near.
    static YcbcrMatrix of(AVColorSpace space, int bits, bool fullRange);
};

}  // namespace Morvane::Worker
