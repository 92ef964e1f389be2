#include "worker/picture/RowKernels.h"
#include "worker/picture/StripConverter.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <bit>

namespace Morvane::Worker {

namespace {

using RowKernels::AlphaPlace;

constexpr int rowsOfAStrip = 32;
constexpr bool hostIsLittleEndian = std::endian::native == std::endian::little;

std::uint8_t* bytesOfRow(const AVFrame& frame, int plane, int y) {
    return frame.data[plane] + static_cast<std::ptrdiff_t>(y) * frame.linesize[plane];
}

std::uint16_t* wordsOfRow(const AVFrame& frame, int plane, int y) {
    return reinterpret_cast<std::uint16_t*>(bytesOfRow(frame, plane, y));
}

class RgbConverter : public StripConverter {
public:
    RgbConverter(const EncodingPlan& encodingPlan, int members)
        : plan(encodingPlan),
          format(*av_pix_fmt_desc_get(plan.picture->format)),
          opaque(!plan.sourceHasAlpha || plan.alpha == AlphaMode::None),
          place(plan.picture->order == SampleOrder::ArgbBigEndian16 || plan.picture->format == AV_PIX_FMT_ARGB
                    ? AlphaPlace::First
                    : AlphaPlace::Last),
          scratch(members) {}

    int stripRows() const override { return rowsOfAStrip; }

    void convert(const RowSource& rows, int firstRow, int rowCount, int member, AVFrame& target) override {
        for (int y = firstRow; y < firstRow + rowCount; ++y) {
            const float* row = rows.pixels(y, scratch[member]);
            if (format.flags & AV_PIX_FMT_FLAG_PLANAR)
                convertPlanes(row, y, target);
            else
                convertPacked(row, y, target);
        }
    }

private:
    void convertPlanes(const float* row, int y, AVFrame& target) const {
        const std::size_t width = plan.width;
        // libav keeps the planes as G, B, R, alpha.
        const int planes[] = {2, 0, 1, 3};
        const bool alpha = format.nb_components == 4;
        if (format.comp[0].depth == 8) {
            std::uint8_t* out[4] = {};
            for (int channel = 0; channel < (alpha ? 4 : 3); ++channel)
                out[channel] = bytesOfRow(target, planes[channel], y);
            RowKernels::planes8(row, out, width);
            return;
        }
        const int highest = (1 << format.comp[0].depth) - 1;
        std::uint16_t* out[4] = {};
        for (int channel = 0; channel < (alpha ? 4 : 3); ++channel)
            out[channel] = wordsOfRow(target, planes[channel], y);
        RowKernels::planes16(row, out, width, static_cast<float>(highest));
        if (alpha && opaque)
            std::fill_n(out[3], width, static_cast<std::uint16_t>(highest));
    }

    void convertPacked(const float* row, int y, AVFrame& target) const {
        const std::size_t width = plan.width;
        const bool swapped = hostIsLittleEndian == ((format.flags & AV_PIX_FMT_FLAG_BE) != 0);
        const bool words = format.comp[0].depth == 16;
        const bool four = format.nb_components == 4;
        if (!words && !four)
            RowKernels::rgb8(row, bytesOfRow(target, 0, y), width);
        else if (!words)
            RowKernels::rgba8(row, bytesOfRow(target, 0, y), width, place, opaque);
        else if (!four)
            (swapped ? RowKernels::rgb16Swapped : RowKernels::rgb16)(row, wordsOfRow(target, 0, y), width);
        else
            (swapped ? RowKernels::rgba16Swapped : RowKernels::rgba16)(row, wordsOfRow(target, 0, y), width,
                                                                       place, opaque);
    }

    const EncodingPlan& plan;
    const AVPixFmtDescriptor& format;
    const bool opaque;
    const AlphaPlace place;
    std::vector<std::vector<float>> scratch;
};

}  // namespace

std::unique_ptr<StripConverter> makeRgbConverter(const EncodingPlan& plan, int members) {
    return std::make_unique<RgbConverter>(plan, members);
}

}  // namespace Morvane::Worker
