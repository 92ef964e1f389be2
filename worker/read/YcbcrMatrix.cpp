#include "worker/read/YcbcrMatrix.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <cstdint>
#include <optional>
#include <string>

#include "worker/Status.h"
#include "worker/picture/LumaWeights.h"

namespace Morvane::Worker {

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
    const std::optional<LumaWeights> weights = LumaWeights::of(space);
    if (!weights)
        throw StatusError(
            Status::NotSupportedByCodec,
            std::string("pictures of colour matrix ") + av_color_space_name(space) + " cannot be converted");
    const auto [red, blue] = *weights;
    const double green = 1 - red - blue;
    matrix.red = chroma(0, 2 * (1 - red));
    matrix.green = chroma(-2 * blue * (1 - blue) / green, -2 * red * (1 - red) / green);
    matrix.blue = chroma(2 * (1 - blue), 0);
    return matrix;
}

}  // namespace Morvane::Worker
