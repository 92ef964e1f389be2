#include "worker/sound/SampleFormat.h"

#include "worker/Status.h"

#include <fmt/core.h>

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace Morvane::Worker {

namespace {

constexpr std::uint32_t slowestRate = 8000;
constexpr std::uint32_t fastestRate = 192000;

}  // namespace

void checkSampleFormat(const SampleFormat& format) {
    const bool mono = format.channels == 1;
    const bool stereo = format.channels == 2 && !format.floatingPoint;
    if (!mono && !stereo) {
        throw StatusError(
            Status::NotSupportedByCodec,
            fmt::format("samples of {} channels{} do not come in 4 bytes a sample frame; one channel of "
                        "float or 32-bit integer and two channels of 16-bit integer do",
                        format.channels, format.floatingPoint ? " of float" : ""));
    }
    if (format.sampleRate < slowestRate || format.sampleRate > fastestRate) {
        throw StatusError(Status::NotSupportedByCodec,
                          fmt::format("a sound track of {} samples a second is out of range ({} to {})",
                                      format.sampleRate, slowestRate, fastestRate));
    }
    if (format.layout.empty()) {
        return;
    }
    AVChannelLayout layout = {};
    const bool known = av_channel_layout_from_string(&layout, format.layout.c_str()) == 0;
    const bool fits = known && layout.nb_channels == format.channels;
    av_channel_layout_uninit(&layout);
    if (!fits) {
        throw StatusError(Status::NotSupportedByCodec,
                          fmt::format("\"{}\" is no layout of {} channels", format.layout, format.channels));
    }
}

}  // namespace Morvane::Worker
