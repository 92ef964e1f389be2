#include "worker/read/PictureColour.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace Morvane::Worker {

namespace {

/// The pixel formats that exist only in full range.
bool isJpegFormat(int format) {
    switch (format) {
        case AV_PIX_FMT_YUVJ411P:
        case AV_PIX_FMT_YUVJ420P:
        case AV_PIX_FMT_YUVJ422P:
        case AV_PIX_FMT_YUVJ440P:
        case AV_PIX_FMT_YUVJ444P:
            return true;
        default:
            return false;
    }
}

bool isYcbcr(const AVPixFmtDescriptor& format) {
    return (format.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) == 0 && format.nb_components >= 3;
}

AVColorSpace likelyMatrix(const AVFrame& frame) {
    constexpr int standardDefinitionLines = 576;
    const bool small = frame.height <= standardDefinitionLines && frame.width <= 1024;
    return small ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
}

}  // namespace

PictureColour PictureColour::of(const AVFrame& frame) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    PictureColour colour;
    const bool saysMatrix =
        frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RESERVED;
    const bool impossible = frame.colorspace == AVCOL_SPC_RGB && isYcbcr(format);
    colour.matrix = saysMatrix && !impossible ? frame.colorspace : likelyMatrix(frame);
    if (frame.color_range == AVCOL_RANGE_UNSPECIFIED)
        colour.fullRange = isJpegFormat(frame.format) || !isYcbcr(format);
    else
        colour.fullRange = frame.color_range == AVCOL_RANGE_JPEG;
    if (frame.chroma_location != AVCHROMA_LOC_UNSPECIFIED)
        colour.chromaLocation = frame.chroma_location;
    else if (isJpegFormat(frame.format))
        colour.chromaLocation = AVCHROMA_LOC_CENTER;
    return colour;
}

}  // namespace Morvane::Worker
