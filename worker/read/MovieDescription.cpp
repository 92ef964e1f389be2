#include "worker/read/MovieDescription.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <utility>

#include "property/NumberText.h"

namespace Morvane::Worker {

namespace {

Orientation orientationOf(const AVStream& stream) {
    std::size_t bytes = 0;
    const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &bytes);
    constexpr std::size_t matrixBytes = 9 * sizeof(std::int32_t);
    return matrix != nullptr && bytes >= matrixBytes
               ? Orientation::ofMatrix(reinterpret_cast<const std::int32_t*>(matrix))
               : Orientation{};
}

int bitsOf(const AVCodecParameters& parameters, const AVPixFmtDescriptor& format) {
    const int stored = (format.flags & AV_PIX_FMT_FLAG_PAL) != 0 ? 8 : format.comp[0].depth;
    // Ten bits in samples of sixteen, for example.
    const int meant = parameters.bits_per_raw_sample;
    return meant > 0 && meant < stored ? meant : stored;
}

/// A palette's alpha is not the movie's: QuickTime's palettes have none.
bool hasAlpha(const AVPixFmtDescriptor& format) {
    return (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0 && (format.flags & AV_PIX_FMT_FLAG_PAL) == 0;
}

}  // namespace

MovieDescription MovieDescription::of(MovieInput& input, const FrameIndex& index) {
    AVStream& stream = input.video();
    const AVCodecParameters& parameters = *stream.codecpar;
    MovieDescription description;
    description.orientation = orientationOf(stream);
    description.width = parameters.width;
    description.height = parameters.height;
    description.rate = av_guess_frame_rate(&input.format(), &stream, nullptr);
    const AVRational aspect = av_guess_sample_aspect_ratio(&input.format(), &stream, nullptr);
    if (aspect.num > 0 && aspect.den > 0)
        description.aspect = aspect;
    if (description.orientation.transposed) {
        std::swap(description.width, description.height);
        std::swap(description.aspect.num, description.aspect.den);
    }
    description.frames = static_cast<std::int64_t>(index.frameCount());
    if (const auto* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(parameters.format))) {
        description.channels = hasAlpha(*format) ? 4 : 3;
        description.bits = bitsOf(parameters, *format);
    }
    return description;
}

std::string MovieDescription::text() const {
    const double framesPerSecond = rate.den == 0 ? 0 : av_q2d(rate);
    std::string text;
    for (const std::string& number :
         {Property::numberText(width), Property::numberText(height), Property::numberText(channels),
          Property::numberText(framesPerSecond), Property::numberText(aspect.num),
          Property::numberText(aspect.den), Property::numberText(frames), Property::numberText(bits)})
        text += (text.empty() ? "" : " ") + number;
    return text;
}

std::uint64_t MovieDescription::frameBytes() const {
    return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) * 4 * sizeof(float);
}

}  // namespace Morvane::Worker
