#include "worker/read/YcbcrRows.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "worker/read/PictureColour.h"
#include "worker/read/SampleScale.h"

namespace Morvane::Worker {

namespace {

constexpr int alphaComponent = 3;

const AVPixFmtDescriptor& formatOf(const AVFrame& frame) {
    return *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
}

int chromaSamples(int samples, int shift) {
    return (samples + (1 << shift) - 1) >> shift;
}

/// Rows of chroma that belong to two fields must not be mixed; an odd row would belong to neither.
int fieldsOf(const AVFrame& frame) {
    const int shift = formatOf(frame).log2_chroma_h;
    return frame.interlaced_frame != 0 && shift > 0 && frame.height % (2 << shift) == 0 ? 2 : 1;
}

/// Where chroma samples lie among those of luma, from the first that they stand for to the right.
double offsetAcross(AVChromaLocation location, int shift) {
    switch (location) {
        case AVCHROMA_LOC_LEFT:
        case AVCHROMA_LOC_TOPLEFT:
        case AVCHROMA_LOC_BOTTOMLEFT:
            return 0;
        default:
            return ((1 << shift) - 1) / 2.0;
    }
}

/// The same downwards. Where there are two fields, in rows of the field: every other row of chroma belongs to
/// it, and every other of luma.
double offsetDown(AVChromaLocation location, int shift, int fields, int field) {
    const int last = (1 << shift) - 1;
    double offset = last / 2.0;
    if (location == AVCHROMA_LOC_TOPLEFT || location == AVCHROMA_LOC_TOP)
        offset = 0;
    else if (location == AVCHROMA_LOC_BOTTOMLEFT || location == AVCHROMA_LOC_BOTTOM)
        offset = last;
    return (offset + field * last) / fields;
}

}  // namespace

YcbcrRows::YcbcrRows(const AVFrame& source, const RgbaRows& rows)
    : frame(source),
      reader(source),
      target(rows),
      matrix(YcbcrMatrix::of(PictureColour::of(source).matrix, reader.depth(0),
                             PictureColour::of(source).fullRange)),
      fields(fieldsOf(source)),
      chromaWidth(chromaSamples(source.width, formatOf(source).log2_chroma_w)),
      chromaRowsOfField(chromaSamples(source.height / fields, formatOf(source).log2_chroma_h)) {
    const AVPixFmtDescriptor& format = formatOf(frame);
    const AVChromaLocation location = PictureColour::of(frame).chromaLocation;
    across = ChromaInterpolation::of(format.log2_chroma_w, offsetAcross(location, format.log2_chroma_w));
    for (int field = 0; field < fields; ++field)
        down[static_cast<std::size_t>(field)] = ChromaInterpolation::of(
            format.log2_chroma_h, offsetDown(location, format.log2_chroma_h, fields, field));
    chroma.resize(static_cast<std::size_t>(chromaWidth) + std::size_t{2} * ChromaInterpolation::margin);
    const auto whole = static_cast<std::size_t>(chromaWidth) << format.log2_chroma_w;
    cb.resize(whole);
    cr.resize(whole);
    for (ReadRows& rowsRead : readRows)
        rowsRead.numbers.fill(-1);
}

/// Row `y` of a plane, which stays valid while seven others are asked for.
template <typename Sample>
const Sample* YcbcrRows::row(int component, int y) {
    if (reader.isPlain(component))
        return static_cast<const Sample*>(reader.plainRow(component, y));
    ReadRows& kept = readRows[static_cast<std::size_t>(component)];
    const bool subsampled = component == 1 || component == 2;
    const auto width = static_cast<std::size_t>(subsampled ? chromaWidth : frame.width);
    kept.samples.resize(kept.numbers.size() * width * sizeof(Sample));
    const std::size_t slot = static_cast<std::size_t>(y) % kept.numbers.size();
    std::uint8_t* samples = kept.samples.data() + slot * width * sizeof(Sample);
    if (kept.numbers[slot] != y) {
        reader.read(component, y, static_cast<int>(width), samples);
        kept.numbers[slot] = y;
    }
    return reinterpret_cast<const Sample*>(samples);
}

template <typename Sample>
void YcbcrRows::readChroma(int component, int y, std::vector<float>& widened) {
    const int field = y % fields;
    const ChromaInterpolation& vertical = down[static_cast<std::size_t>(field)];
    const int rowOfField = y / fields;
    const auto& weights =
        vertical.weights[static_cast<std::size_t>(rowOfField & ((1 << vertical.shift) - 1))];
    FloatKernels::WeightedRows<Sample> rows{};
    for (int tap = 0; tap < ChromaInterpolation::taps; ++tap) {
        const float weight = weights[static_cast<std::size_t>(tap)];
        if (weight == 0)
            continue;
        const int number = ChromaInterpolation::mirrored(
            (rowOfField >> vertical.shift) + tap - ChromaInterpolation::margin, chromaRowsOfField);
        rows.rows[rows.used] = row<Sample>(component, number * fields + field);
        rows.weights[rows.used++] = weight;
    }
    const auto count = static_cast<std::size_t>(chromaWidth);
    if (across.shift == 0)
        return FloatKernels::blend(rows, count, matrix.neutral, widened.data());
    float* first = chroma.data() + ChromaInterpolation::margin;
    FloatKernels::blend(rows, count, matrix.neutral, first);
    for (int beyond = 1; beyond <= ChromaInterpolation::margin; ++beyond) {
        first[-beyond] = first[ChromaInterpolation::mirrored(-beyond, chromaWidth)];
        first[chromaWidth - 1 + beyond] =
            first[ChromaInterpolation::mirrored(chromaWidth - 1 + beyond, chromaWidth)];
    }
    FloatKernels::widen(first, count, across, widened.data());
}

template <typename Sample>
void YcbcrRows::convertRow(int y) {
    readChroma<Sample>(1, y, cb);
    readChroma<Sample>(2, y, cr);
    const float* alphaRow = nullptr;
    if (reader.components() > alphaComponent) {
        alpha.resize(target.width);
        // Alpha has no video range.
        SampleScale::ofBits(reader.depth(alphaComponent), true)
            .apply(row<Sample>(alphaComponent, y), sizeof(Sample), target.width, alpha.data());
        alphaRow = alpha.data();
    }
    target.write(static_cast<std::size_t>(y), packed, [&](const PixelRow& pixels) {
        FloatKernels::pixels(row<Sample>(0, y), cb.data(), cr.data(), alphaRow, matrix, pixels);
    });
}

void YcbcrRows::convert(std::size_t y) {
    if (reader.sampleBytes() == 1)
        convertRow<std::uint8_t>(static_cast<int>(y));
    else
        convertRow<std::uint16_t>(static_cast<int>(y));
}

}  // namespace Morvane::Worker
