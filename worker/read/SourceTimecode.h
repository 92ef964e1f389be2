#pragma once

extern "C" {
#include <libavformat/avformat.h>
}

#include <optional>
#include <string>

#include "worker/read/SourceFile.h"

namespace Morvane::Worker {

/// What a movie's time-code track says. Source: QuickTime File Format, timecode media.
struct SourceTimecode {
    std::string text;     ///< of the movie's first frame: 01:00:00:00, or 01:00:00;00 for drop-frame
    int framesPerSecond;  ///< that the text counts: 24 for 23.976, but whatever the track says

    /// Of `movie`, whose bytes are `file`'s; nothing where it has no such track, or one that cannot be read.
    /// libav counts the rate of the pictures, rounded, which is not what every track counts: 12.5 pictures a
    /// second may be counted as 12.
    static std::optional<SourceTimecode> of(const AVFormatContext& movie, const SourceFile& file);
};

}  // namespace Morvane::Worker
