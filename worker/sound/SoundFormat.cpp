#include "worker/sound/SoundFormat.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace Morvane::Worker {

std::uint32_t SoundFormat::bytesPerSample() const {
    return static_cast<std::uint32_t>(av_get_exact_bits_per_sample(codec)) / 8;
}

std::uint32_t SoundFormat::bytesPerFrame() const {
    return bytesPerSample() * static_cast<std::uint32_t>(channels);
}

SoundFormat trackFormatOf(const SampleFormat& format) {
    const AVCodecID codec = format.channels == 2   ? AV_CODEC_ID_PCM_S16BE
                            : format.floatingPoint ? AV_CODEC_ID_PCM_F32BE
                                                   : AV_CODEC_ID_PCM_S32BE;
    const char* usual = format.channels == 2 ? "stereo" : "mono";
    return {codec, format.sampleRate, format.channels, format.layout.empty() ? usual : format.layout};
}

}  // namespace Morvane::Worker
