#pragma once

#include "Kex/Image/LUT.h"
#include "host/images/ChannelLayout.h"
#include "host/images/Picture.h"
#include "host/images/PictureHeader.h"

namespace Corvel {

/// Pixels as a decoder gives them: `window.width` x `window.height` pixels of `channels` floats, interleaved,
/// top row first, and what their values mean.
struct InterleavedPixels {
    const float* samples = nullptr;
    Window window;
    int channels = 0;
    ChannelLayout layout;  ///< indices among `channels`
    bool straightAlpha = false;
    const Kex::Image::LUT& curve;
};

/// Gives the picture the frame's size and channels, black where the file has no pixels.
void prepareFor(const PictureHeader& header, Picture& picture);

/// The same for codes of `table`. REQUIRES: picture.allowsCodes(), and that the file has pixels everywhere or
/// code 0 is black.
void prepareCodesFor(const PictureHeader& header, const Kex::Image::CodeTable& table, Picture& picture);

/// Takes `curve` off the colours of the part of the picture that the file covers.
void linearise(const PictureHeader& header, const Kex::Image::LUT& curve, Picture& picture);

/// Lays the pixels where they belong in `display`, whose size the picture has: split into planes, linear,
/// premultiplied in linear light. Pixels outside of `display` are cropped; samples of the picture that
/// `pixels` does not cover are left alone. The picture has alpha where the layout has.
void placePixels(const InterleavedPixels& pixels, const Window& display, Picture& picture);

}  // namespace Corvel
