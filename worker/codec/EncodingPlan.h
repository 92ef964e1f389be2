#pragma once

#include "worker/codec/Settings.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Morvane::Worker {

/// What a movie's pictures are to be, as a host asks for it.
struct EncodingRequest {
    Settings settings;  ///< checked; names the codec
    int width = 0;      ///< pixels
    int height = 0;     ///< pixels
    int quality = 4;    ///< 0 to 5 (Min, Low, Normal, High, Max, Lossless)
    int keyFrameRate =
        0;  ///< longest distance between key frames; 0: the codec decides; 1: all are key frames
    bool hasAlpha =
        false;  ///< false: the frames' alpha is ignored and, where the codec stores one, is opaque
    AVRational rate = {24, 1};  ///< frames a second, exact
};

/// Everything that encoder, picture conversion and movie file must agree on, decided once, before anything is
/// opened.
struct EncodingPlan {
    const Codec* codec = nullptr;
    const CodecPicture* picture = nullptr;
    std::string encoder;    ///< libav encoder
    std::uint32_t tag = 0;  ///< the movie's four-character type, as libav keeps it
    int width = 0;
    int height = 0;
    AVRational rate = {24, 1};
    AlphaMode alpha = AlphaMode::None;  ///< None also for a picture without alpha
    Curve curve = Curve::Srgb;          ///< of the pixels that come; only straight alpha takes it off
    bool sourceHasAlpha = false;
    ColourDecision colour;
    AVFieldOrder fields = AV_FIELD_PROGRESSIVE;
    AVRational aspect = {1, 1};
    int keyFrameRate = 0;
    int threads = 1;         ///< at least 1
    int encoderThreads = 1;  ///< of one encoder; 1 where several work side by side
    std::vector<std::pair<std::string, std::string>> options;  ///< of the encoder, libav's names, each once
};

/// Decides. Throws StatusError: BadArgument for a quality, size or rate that is none; NotSupportedByCodec,
/// with a sentence that names two codecs that can, for a size or a combination of settings that the codec
/// cannot take.
EncodingPlan planEncoding(const EncodingRequest& request);

/// What the depth field of the sample description must state: 32 with an alpha channel, 24 without, 8 with
/// a palette.
int sampleDescriptionDepth(const EncodingPlan& plan);

}  // namespace Morvane::Worker
