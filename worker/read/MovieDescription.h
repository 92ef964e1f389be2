#pragma once

extern "C" {
#include <libavutil/rational.h>
}

#include <cstdint>
#include <string>

#include "worker/read/FrameIndex.h"
#include "worker/read/MovieInput.h"
#include "worker/read/Orientation.h"

namespace Morvane::Worker {

/// What a movie's pictures are, as they are shown: turned as the movie says.
struct MovieDescription {
    int width = 0;            ///< pixels
    int height = 0;           ///< pixels
    int channels = 3;         ///< 4 with alpha
    AVRational rate{0, 1};    ///< frames a second; the average where it varies
    AVRational aspect{1, 1};  ///< of a pixel, width to height
    std::int64_t frames = 0;
    int bits = 8;  ///< a channel
    Orientation orientation;

    static MovieDescription of(MovieInput& input, const FrameIndex& index);

    /// The eight numbers of an answer, blanks between them.
    std::string text() const;

    /// Bytes of one frame as a host gets it.
    std::uint64_t frameBytes() const;
};

}  // namespace Morvane::Worker
