#include "worker/read/RgbRows.h"

#include "worker/read/FloatKernels.h"
#include "worker/read/PictureColour.h"

namespace Morvane::Worker {

RgbRows::RgbRows(const AVFrame& source, const RgbaRows& rows) : frame(source), reader(source), target(rows) {
    const bool fullRange = PictureColour::of(frame).fullRange;
    for (int component = 0; component < reader.components(); ++component) {
        const bool isAlpha = reader.components() % 2 == 0 && component == reader.components() - 1;
        scales.push_back(SampleScale::ofBits(reader.depth(component), fullRange || isAlpha));
        values.emplace_back(target.width);
    }
    // The one format whose white is 0.
    if (frame.format == AV_PIX_FMT_MONOWHITE)
        scales[0] = {1, -1};
    samples.resize(target.width * sizeof(float));
}

void RgbRows::convert(std::size_t y) {
    for (std::size_t component = 0; component < values.size(); ++component) {
        const void* row = samples.data();
        if (reader.isPlain(static_cast<int>(component)))
            row = reader.plainRow(static_cast<int>(component), static_cast<int>(y));
        else
            reader.read(static_cast<int>(component), static_cast<int>(y), frame.width, samples.data());
        scales[component].apply(row, reader.sampleBytes(), target.width, values[component].data());
    }
    const bool isGrey = values.size() < 3;
    const auto row = [&](std::size_t component) { return values[component].data(); };
    const float* alpha = values.size() % 2 == 0 ? values.back().data() : nullptr;
    target.write(y, packed, [&](const PixelRow& pixels) {
        FloatKernels::pixels(row(0), row(isGrey ? 0 : 1), row(isGrey ? 0 : 2), alpha, pixels);
    });
}

}  // namespace Morvane::Worker
