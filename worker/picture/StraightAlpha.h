#pragma once

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <cstddef>

namespace Morvane::Worker {

/// Divides alpha out of a row of pixels: takes the transfer curve off, divides in linear light (0 where alpha
/// is 0), puts the curve on again. `rgba` and `out` hold `width` x 4 floats and may be the same; alpha is
/// copied. Colours where alpha is 1 stay as they are.
///
/// `transfer` names the curve that the pixels have. The host's own curve is the sRGB curve, which it tags as
/// BT.709: both names mean that curve here, and so do the other camera curves of video.
void divideAlphaOut(const float* rgba, float* out, std::size_t width, AVColorTransferCharacteristic transfer);

/// Linear light of a stored value, and back. Values below 0 follow the mirror image.
double linearOf(double stored, AVColorTransferCharacteristic transfer);
double storedOf(double linear, AVColorTransferCharacteristic transfer);

}  // namespace Morvane::Worker
