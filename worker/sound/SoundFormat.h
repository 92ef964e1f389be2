#pragma once

#include "worker/sound/SampleFormat.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

#include <cstdint>
#include <string>

namespace Morvane::Worker {

/// The form of a sound track in a movie: uncompressed, interleaved, big-endian (a reader in wide use takes
/// little-endian float for something else).
struct SoundFormat {
    AVCodecID codec = AV_CODEC_ID_NONE;  ///< PCM_S16BE, S24BE, S32BE, F32BE or F64BE
    std::uint32_t sampleRate = 0;        ///< sample frames a second
    int channels = 0;
    std::string layout;  ///< libav's name of the channel layout

    /// Bytes of one sample of one channel.
    std::uint32_t bytesPerSample() const;
    /// Bytes of one sample of all channels.
    std::uint32_t bytesPerFrame() const;
};

/// The track form for a host's samples, which holds them exactly. REQUIRES: checkSampleFormat passed.
SoundFormat trackFormatOf(const SampleFormat& format);

}  // namespace Morvane::Worker
