#pragma once

extern "C" {
#include <libavcodec/codec_par.h>
#include <libavutil/rational.h>
}

#include <cstdint>
#include <map>
#include <string>

namespace Morvane::Worker {

/// What a movie file must know about its pictures before the first packet.
struct VideoTrack {
    /// Type, four-character tag, size, extradata, colours, pixel aspect, field order, bits_per_coded_sample
    /// (32 where there is alpha). Read during the file's construction, not kept.
    const AVCodecParameters* parameters = nullptr;
    AVRational frameRate = {24, 1};  ///< frames a second, exact, in lowest terms
    std::string compressorName;      ///< at most 31 bytes are kept; empty: the type's usual name
};

/// A time-code track over the whole movie, non-drop, 24-hour flag set.
struct TimecodeTrack {
    int framesPerSecond = 24;     ///< the nominal rate that the time code counts with, 1 to 255
    std::int64_t startFrame = 0;  ///< frames since 00:00:00:00, 0 to 2^31 - 1
    std::string reel;             ///< UTF-8; empty: none
};

/// Keys and UTF-8 values. The known names (title, author, artist, comment, copyright, description, keywords,
/// director, producer, software, date, album, composer, genre, make, model, …) become QuickTime user data,
/// any other key a metadata item under its own name.
using Metadata = std::map<std::string, std::string>;

/// The metadata key that says what the movie's alpha is: "none", "straight" or "premultiplied".
inline constexpr const char* alphaMetadataKey = "com.corvel.alpha";

}  // namespace Morvane::Worker
