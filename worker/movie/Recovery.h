#pragma once

#include "worker/movie/IndexPlacement.h"
#include "worker/movie/MovieTracks.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Morvane::Worker {

/// What was found in a movie that its writer did not finish.
struct RecoveredMovie {
    bool wasWhole = false;           ///< an ordinary movie already; nothing was changed
    std::int64_t frames = 0;         ///< kept
    std::int64_t framesLeftOut = 0;  ///< at the end, which can't be shown without others that are missing
    double framesPerSecond = 0;
    std::optional<TimecodeTrack> timecode;  ///< kept
};

/// Makes an ordinary movie, index first, of what a crash left at `path`. As with a finished one, the file at
/// the path is at every moment either what it was or the whole movie. Media below `fewestBytesInPlace` are
/// copied beside it and renamed over it. Throws StatusError: NotFound, NoPermission, BadArgument (no movie of
/// this program, or none of its frames is whole), DiskFull, InputOutput.
RecoveredMovie recoverMovie(const std::string& path, std::int64_t fewestBytesInPlace = usualFewestInPlace);

}  // namespace Morvane::Worker
