#include "worker/read/FloatConverter.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <atomic>
#include <vector>

#include "worker/Status.h"
#include "worker/read/RowReader.h"
#include "worker/read/SampleScale.h"

namespace Morvane::Worker {

namespace {

constexpr std::size_t rowsOfPart = 16;

/// One thread's work on a picture that needs no matrix: R, G, B and maybe A, or Y and maybe A.
class RgbRows {
public:
    RgbRows(const AVFrame& source, const RgbaRows& rows) : frame(source), reader(source), target(rows) {
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

    void convert(std::size_t y) {
        for (std::size_t component = 0; component < values.size(); ++component) {
            reader.read(static_cast<int>(component), static_cast<int>(y), frame.width, samples.data());
            scales[component].apply(samples.data(), reader.sampleBytes(), target.width,
                                    values[component].data());
        }
        const auto row = [&](std::size_t component) { return values[component].data(); };
        if (values.size() >= 3)
            target.store(y, row(0), row(1), row(2), values.size() > 3 ? row(3) : nullptr);
        else
            target.store(y, row(0), row(0), row(0), values.size() > 1 ? row(1) : nullptr);
    }

private:
    const AVFrame& frame;
    const RowReader reader;
    const RgbaRows& target;
    std::vector<SampleScale> scales;
    std::vector<std::vector<float>> values;
    std::vector<std::uint8_t> samples;
};

bool isYcbcr(const AVFrame& frame) {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    constexpr unsigned noMatrix = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL;
    const bool isXyz = frame.format == AV_PIX_FMT_XYZ12LE || frame.format == AV_PIX_FMT_XYZ12BE;
    return format.nb_components >= 3 && (format.flags & noMatrix) == 0 && !isXyz;
}

}  // namespace

FloatConverter::FloatConverter(int threads) : team(threads) {}

void FloatConverter::convert(const AVFrame& frame, const Orientation& orientation, std::span<float> rgba) {
    if (!RowReader::isReadable(frame)) {
        const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(frame.format));
        throw StatusError(Status::NotSupportedByCodec, std::string("pictures of pixel format ") +
                                                           (name == nullptr ? "?" : name) +
                                                           " cannot be converted");
    }
    const RgbaRows target{rgba.data(), static_cast<std::size_t>(frame.width),
                          static_cast<std::size_t>(frame.height), orientation};
    if (isYcbcr(frame))
        convertYcbcr(frame, target);
    else
        convertRgb(frame, target);
}

void FloatConverter::convertRgb(const AVFrame& frame, const RgbaRows& target) {
    std::vector<RgbRows> members(static_cast<std::size_t>(team.size()), RgbRows(frame, target));
    team.share((target.height + rowsOfPart - 1) / rowsOfPart, [&](std::size_t part, int member) {
        const std::size_t end = std::min(target.height, (part + 1) * rowsOfPart);
        for (std::size_t y = part * rowsOfPart; y < end; ++y)
            members[static_cast<std::size_t>(member)].convert(y);
    });
}

void FloatConverter::convertYcbcr(const AVFrame& frame, const RgbaRows& target) {
    const auto kind = YcbcrStrips::Kind::of(frame);
    if (strips == nullptr || !(strips->kind == kind))
        strips = std::make_unique<YcbcrStrips>(kind, team.size());
    // The team's work must not throw; the first failure stands for all.
    std::atomic<bool> failed{false};
    team.share(strips->count(), [&](std::size_t strip, int member) {
        try {
            strips->convert(frame, strip, member, target);
        } catch (const StatusError&) {
            failed = true;
        }
    });
    if (failed)
        throw StatusError(Status::CodecFailed, "cannot convert the picture");
}

}  // namespace Morvane::Worker
