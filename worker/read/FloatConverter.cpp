#include "worker/read/FloatConverter.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <vector>

#include "worker/Status.h"
#include "worker/read/RgbRows.h"
#include "worker/read/RowReader.h"
#include "worker/read/YcbcrRows.h"

namespace Morvane::Worker {

namespace {

constexpr std::size_t rowsOfPart = 16;

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
        convertRows<YcbcrRows>(frame, target);
    else
        convertRows<RgbRows>(frame, target);
}

template <class Rows>
void FloatConverter::convertRows(const AVFrame& frame, const RgbaRows& target) {
    std::vector<Rows> members(static_cast<std::size_t>(team.size()), Rows(frame, target));
    const std::size_t parts = (target.height + rowsOfPart - 1) / rowsOfPart;
    team.share(parts, [&](std::size_t part, int member) {
        const std::size_t first = part * rowsOfPart;
        const std::size_t end = std::min(target.height, first + rowsOfPart);
        for (std::size_t y = first; y < end; ++y)
            members[static_cast<std::size_t>(member)].convert(y);
    });
}

}  // namespace Morvane::Worker
