#include "worker/Status.h"
#include "worker/picture/ChromaReduction.h"
#include "worker/picture/LumaWeights.h"
#include "worker/picture/StripConverter.h"
#include "worker/picture/YcbcrKernels.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace Morvane::Worker {

namespace {

using YcbcrKernels::SampleForm;

/// Rows of a strip where strips are independent: some hundred kilobytes of samples.
constexpr int rowsOfAStrip = 64;
/// What chroma filters may read beyond both ends of a row.
constexpr std::size_t margin = ChromaReduction::mostTaps;

SampleForm sampleForm(const EncodingPlan& plan, int bits) {
    const std::optional<LumaWeights> weights = LumaWeights::of(plan.colour.matrix);
    if (!weights)
        throw StatusError(Status::NotSupportedByCodec,
                          fmt::format("pictures cannot be made with the colour matrix {}",
                                      av_color_space_name(plan.colour.matrix)));
    const auto [red, blue] = *weights;
    const bool full = plan.colour.range == AVCOL_RANGE_JPEG;
    const double unit = (1 << bits) / 256.0;
    const double lumaRange = full ? 256 * unit - 1 : 219 * unit;
    const double chromaRange = full ? lumaRange : 224 * unit;
    const double black = full ? 0 : 16 * unit;
    // Video range has room for what is a little blacker than black and whiter than white, but for the codes
    // that synchronise a video signal. Full range has none.
    const double lowest = full ? 0 : unit;
    const double highest = full ? lumaRange : 255 * unit - 1;
    SampleForm form{};
    form.red = static_cast<float>(red);
    form.green = static_cast<float>(1 - red - blue);
    form.blue = static_cast<float>(blue);
    form.lumaScale = static_cast<float>(lumaRange);
    form.black = static_cast<float>(black);
    form.cbScale = static_cast<float>(chromaRange / (2 * (1 - blue)));
    form.crScale = static_cast<float>(chromaRange / (2 * (1 - red)));
    form.neutral = static_cast<float>(128 * unit);
    form.lowest = static_cast<float>(lowest);
    form.highest = static_cast<float>(highest);
    form.lowestRgb = static_cast<float>((lowest - black) / lumaRange);
    form.highestRgb = static_cast<float>((highest - black) / lumaRange);
    return form;
}

/// Rows of a picture that belong together: all of them, or those of one field.
struct RowSeries {
    int first, step, count;
};

class YcbcrConverter : public StripConverter {
public:
    YcbcrConverter(const EncodingPlan& encodingPlan, int members);

    int stripRows() const override {
        return isSubsampledDown() ? plan.height : std::min(rowsOfAStrip, plan.height);
    }
    void convert(const RowSource& rows, int firstRow, int rowCount, int member, AVFrame& target) override;

private:
    /// What one thread needs.
    struct Buffers {
        std::vector<float> scratch;                ///< RowSource's
        std::array<std::vector<float>, 2> chroma;  ///< Cb and Cr of a row, with room around it
        std::array<std::vector<float>, 2>
            reduced;  ///< rings of rows that are as wide as the picture's chroma
        std::array<std::vector<std::uint8_t>, 3>
            packed;  ///< samples of a row, where the picture has no planes
    };

    bool isSubsampledDown() const { return format.log2_chroma_h > 0; }
    bool isPacked() const { return plan.picture->format == AV_PIX_FMT_UYVY422; }
    float* reducedRow(Buffers& buffers, int component, int row) const;

    template <typename Sample>
    void convertSeries(const RowSource& rows, const RowSeries& series, Buffers& buffers,
                       AVFrame& target) const;
    template <typename Sample>
    void convertRow(const float* pixels, int y, Buffers& buffers, AVFrame& target) const;
    template <typename Sample>
    void splitRow(const float* pixels, int row, int y, Buffers& buffers, AVFrame& target) const;
    void reduceAcross(Buffers& buffers, int component, int row) const;
    template <typename Sample>
    void storeChroma(const RowSeries& series, int row, Buffers& buffers, AVFrame& target) const;
    template <typename Sample>
    Sample* rowOf(AVFrame& target, int component, int y, Buffers& buffers) const;
    void pack(Buffers& buffers, int y, AVFrame& target) const;

    const EncodingPlan& plan;
    const AVPixFmtDescriptor& format;
    const SampleForm form;
    const std::size_t width;
    const std::size_t chromaWidth;
    const bool byFields;  ///< chroma of interlaced pictures is made within each field
    ChromaReduction across;
    ChromaReduction down;
    std::vector<Buffers> buffersOfMember;
};

YcbcrConverter::YcbcrConverter(const EncodingPlan& encodingPlan, int members)
    : plan(encodingPlan),
      format(*av_pix_fmt_desc_get(plan.picture->format)),
      form(sampleForm(plan, format.comp[0].depth)),
      width(static_cast<std::size_t>(plan.width)),
      chromaWidth(static_cast<std::size_t>(AV_CEIL_RSHIFT(plan.width, format.log2_chroma_w))),
      byFields(plan.fields != AV_FIELD_PROGRESSIVE && isSubsampledDown() && plan.height % 4 == 0),
      buffersOfMember(static_cast<std::size_t>(members)) {
    // JPEG's chroma lies between the luma samples; elsewhere it is on the left ones, as in MPEG-2.
    const double between = ((1 << format.log2_chroma_w) - 1) / 2.0;
    across = ChromaReduction::of(format.log2_chroma_w, plan.codec->colour == ColourModel::Jpeg ? between : 0);
    down = ChromaReduction::of(format.log2_chroma_h, ((1 << format.log2_chroma_h) - 1) / 2.0);
    for (Buffers& buffers : buffersOfMember) {
        for (std::vector<float>& row : buffers.chroma)
            row.resize((chromaWidth << format.log2_chroma_w) + 2 * margin);
        for (std::vector<float>& ring : buffers.reduced)
            ring.resize(static_cast<std::size_t>(down.taps) * chromaWidth);
        for (std::vector<std::uint8_t>& row : buffers.packed)
            row.resize(isPacked() ? 2 * chromaWidth : 0);
    }
}

void YcbcrConverter::convert(const RowSource& rows, int firstRow, int rowCount, int member, AVFrame& target) {
    Buffers& buffers = buffersOfMember[static_cast<std::size_t>(member)];
    const auto convertAll = [&](const RowSeries& series) {
        if (format.comp[0].depth > 8)
            convertSeries<std::uint16_t>(rows, series, buffers, target);
        else
            convertSeries<std::uint8_t>(rows, series, buffers, target);
    };
    if (byFields) {
        convertAll({0, 2, plan.height / 2});
        convertAll({1, 2, plan.height / 2});
    } else {
        convertAll({firstRow, 1, rowCount});
    }
}

/// Row by row of chroma; those of full size that it needs are made when they are needed first.
template <typename Sample>
void YcbcrConverter::convertSeries(const RowSource& rows, const RowSeries& series, Buffers& buffers,
                                   AVFrame& target) const {
    const auto place = [&](int row) { return series.first + row * series.step; };
    const auto pixels = [&](int row) { return rows.pixels(place(row), buffers.scratch); };
    if (across.shift == 0) {
        for (int row = 0; row < series.count; ++row)
            convertRow<Sample>(pixels(row), place(row), buffers, target);
        return;
    }
    const int chromaRows = AV_CEIL_RSHIFT(series.count, format.log2_chroma_h);
    int next = 0;
    for (int row = 0; row < chromaRows; ++row) {
        const int last = (row << down.shift) + down.first + down.taps - 1;
        for (; next <= std::min(last, series.count - 1); ++next)
            splitRow<Sample>(pixels(next), next, place(next), buffers, target);
        storeChroma<Sample>(series, row, buffers, target);
    }
}

float* YcbcrConverter::reducedRow(Buffers& buffers, int component, int row) const {
    return buffers.reduced[static_cast<std::size_t>(component - 1)].data() +
           static_cast<std::size_t>(row % down.taps) * chromaWidth;
}

template <typename Sample>
Sample* YcbcrConverter::rowOf(AVFrame& target, int component, int y, Buffers& buffers) const {
    std::uint8_t* const row =
        isPacked() ? buffers.packed[static_cast<std::size_t>(component)].data()
                   : target.data[component] + static_cast<std::ptrdiff_t>(y) * target.linesize[component];
    return reinterpret_cast<Sample*>(row);
}

/// A row whose chroma is as large as luma.
template <typename Sample>
void YcbcrConverter::convertRow(const float* pixels, int y, Buffers& buffers, AVFrame& target) const {
    const bool withAlpha = format.nb_components == 4;
    Sample* const alpha = withAlpha ? rowOf<Sample>(target, 3, y, buffers) : nullptr;
    const Sample opaque = static_cast<Sample>((1 << format.comp[0].depth) - 1);
    const bool stored = withAlpha && plan.alpha != AlphaMode::None;
    YcbcrKernels::convert(
        pixels, width, form,
        YcbcrKernels::WholeRow<Sample>{
            rowOf<Sample>(target, 0, y, buffers), rowOf<Sample>(target, 1, y, buffers),
            rowOf<Sample>(target, 2, y, buffers), stored ? alpha : nullptr, static_cast<float>(opaque)});
    if (withAlpha && !stored)
        std::fill_n(alpha, width, opaque);
}

/// Luma of one row to its place, chroma to the ring.
template <typename Sample>
void YcbcrConverter::splitRow(const float* pixels, int row, int y, Buffers& buffers, AVFrame& target) const {
    Sample* const luma = rowOf<Sample>(target, 0, y, buffers);
    YcbcrKernels::split(pixels, width, form, luma, buffers.chroma[0].data() + margin,
                        buffers.chroma[1].data() + margin);
    // An odd width has half a chroma sample more.
    if (isPacked() && width % 2 != 0)
        luma[width] = luma[width - 1];
    reduceAcross(buffers, 1, row);
    reduceAcross(buffers, 2, row);
}

void YcbcrConverter::reduceAcross(Buffers& buffers, int component, int row) const {
    float* const values = buffers.chroma[static_cast<std::size_t>(component - 1)].data() + margin;
    // The picture's edges go on for ever.
    std::fill(values - margin, values, values[0]);
    std::fill(values + width, values + (chromaWidth << across.shift) + margin, values[width - 1]);
    YcbcrKernels::reduce(values, chromaWidth, across, reducedRow(buffers, component, row));
}

template <typename Sample>
void YcbcrConverter::storeChroma(const RowSeries& series, int row, Buffers& buffers, AVFrame& target) const {
    // Only whole pictures and fields are subsampled downwards, and they begin at the top.
    const int y = series.first + row * series.step;
    for (const int component : {1, 2}) {
        std::array<const float*, ChromaReduction::mostTaps> used{};
        for (int tap = 0; tap < down.taps; ++tap)
            used[static_cast<std::size_t>(tap)] = reducedRow(
                buffers, component, std::clamp((row << down.shift) + down.first + tap, 0, series.count - 1));
        YcbcrKernels::store(used.data(), down.weights.data(), down.taps, chromaWidth, form,
                            rowOf<Sample>(target, component, y, buffers));
    }
    if (isPacked())
        pack(buffers, y, target);
}

void YcbcrConverter::pack(Buffers& buffers, int y, AVFrame& target) const {
    const std::uint8_t* const luma = buffers.packed[0].data();
    const std::uint8_t* const cb = buffers.packed[1].data();
    const std::uint8_t* const cr = buffers.packed[2].data();
    std::uint8_t* const out = target.data[0] + static_cast<std::ptrdiff_t>(y) * target.linesize[0];
    for (std::size_t x = 0; x < chromaWidth; ++x) {
        out[4 * x] = cb[x];
        out[4 * x + 1] = luma[2 * x];
        out[4 * x + 2] = cr[x];
        out[4 * x + 3] = luma[2 * x + 1];
    }
}

}  // namespace

std::unique_ptr<StripConverter> makeYcbcrConverter(const EncodingPlan& plan, int members) {
    return std::make_unique<YcbcrConverter>(plan, members);
}

}  // namespace Morvane::Worker
