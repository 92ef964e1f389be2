#include "worker/movie/Recovery.h"
#include "worker/movie_tool/Commands.h"
#include "worker/movie_tool/RateText.h"

#include <fmt/core.h>

namespace Morvane::Worker {

namespace {

std::string timecodeText(const TimecodeTrack& timecode) {
    const std::int64_t frames = timecode.startFrame % timecode.framesPerSecond;
    const std::int64_t seconds = timecode.startFrame / timecode.framesPerSecond;
    return fmt::format("{:02}:{:02}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60, seconds % 60, frames);
}

}  // namespace

void recoverCommand(const std::string& path) {
    const RecoveredMovie movie = recoverMovie(path);
    if (movie.wasWhole) {
        fmt::print("{}: whole already, nothing to recover\n", path);
        return;
    }
    fmt::print("{}: kept {} frame{} at {} frames/s", path, movie.frames, movie.frames == 1 ? "" : "s",
               rateText(movie.framesPerSecond));
    if (movie.timecode) {
        fmt::print(", time code from {}", timecodeText(*movie.timecode));
        if (!movie.timecode->reel.empty()) {
            fmt::print(", reel {}", movie.timecode->reel);
        }
    } else {
        fmt::print(", no time code");
    }
    if (movie.framesLeftOut > 0) {
        fmt::print("; left out {} at the end that cannot be shown without missing ones", movie.framesLeftOut);
    }
    fmt::print("\n");
}

}  // namespace Morvane::Worker
