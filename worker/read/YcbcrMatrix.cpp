#include "worker/read/YcbcrMatrix.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstdint>
#include <string>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

/// What luma has of red and of blue.
struct LumaWeights {
    double red, blue;
};

LumaWeights lumaWeights(AVColorSpace space) {
    switch (space) {
        case AVCOL_SPC_BT709:
            return {0.2126, 0.0722};
        case AVCOL_SPC_FCC:
            return {0.30, 0.11};
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
            return {0.299, 0.114};
        case AVCOL_SPC_SMPTE240M:
            return {0.212, 0.087};
        case AVCOL_SPC_BT2020_NCL:
        case AVCOL_SPC_BT2020_CL:
            return {0.2627, 0.0593};
        default:
            throw StatusError(Status::NotSupportedByCodec, std::string("pictures of colour matrix ") +
                                                               av_color_space_name(space) +
                                                               " cannot be converted");
    }
}

}  // namespace

YcbcrMatrix YcbcrMatrix::of(AVColorSpace space, int bits, bool fullRange) {
    const auto unit = static_cast<double>(std::uint64_t{1} << bits) / 256;
    const double range = fullRange ? 256 * unit - 1 : 219 * unit;
    // The chroma of YCgCo has luma's range, that of all others is 224 units wide.
    const double chromaRange = fullRange || space == AVCOL_SPC_YCGCO ? range : 224 * unit;
    const auto chroma = [&](double cb, double cr) {
        return Chroma{static_cast<float>(cb / chromaRange), static_cast<float>(cr / chromaRange)};
    };
    YcbcrMatrix matrix{};
    matrix.black = static_cast<float>(fullRange ? 0 : 16 * unit);
    matrix.range = static_cast<float>(range);
    matrix.neutral = static_cast<float>(128 * unit);
    if (space == AVCOL_SPC_YCGCO) {
        matrix.red = chroma(-1, 1);
        matrix.green = chroma(1, 0);
        matrix.blue = chroma(-1, -1);
        return matrix;
    }
    const auto [red, blue] = lumaWeights(space);
    const double green = 1 - red - blue;
    matrix.red = chroma(0, 2 * (1 - red));
    matrix.green = chroma(-2 * blue * (1 - blue) / green, -2 * red * (1 - red) / green);
    matrix.blue = chroma(2 * (1 - blue), 0);
    return matrix;
}

}  // namespace Morvane::Worker
