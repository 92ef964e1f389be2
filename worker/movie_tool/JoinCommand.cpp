#include "timecode/FrameRate.h"
#include "timecode/Timecode.h"
#include "worker/Status.h"
#include "worker/movie/Joining.h"
#include "worker/movie/StoredMovie.h"
#include "worker/movie_tool/Commands.h"
#include "worker/movie_tool/RateText.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>

namespace Morvane::Worker {

namespace {

float rateOf(const std::string& path) {
    const StoredMovie movie = readStoredMovie(OutputFile::openToRead(path));
    return static_cast<float>(movie.pictures.timeScale) / static_cast<float>(movie.ticksPerFrame);
}

/// Seconds, worked out with the precision that a render's have.
float soundOffsetOf(const JoinArguments& arguments) {
    return arguments.offsetInFrames ? arguments.soundOffset / rateOf(arguments.chunks.paths.front())
                                    : arguments.soundOffset;
}

/// The time code that a render at the first chunk's rate would have.
std::optional<TimecodeTrack> timecodeOf(const JoinArguments& arguments) {
    if (arguments.timecode.empty()) {
        return std::nullopt;
    }
    const float rate = rateOf(arguments.chunks.paths.front());
    const Timecode::FrameRate code = Timecode::toFrameRateCode(rate);
    const std::int64_t start = Timecode::parseTimecode(arguments.timecode, code, Timecode::Mode::NonDrop, 0);
    if (start == Timecode::invalidTimecode) {
        throw StatusError(Status::BadArgument, fmt::format("{} is no time code at {} frames/s",
                                                           arguments.timecode, rateText(rate)));
    }
    return TimecodeTrack{static_cast<int>(std::max(1U, code.nominalRate())), start, arguments.reel};
}

Metadata metadataOf(const JoinArguments& arguments) {
    Metadata metadata;
    for (const std::string& item : arguments.metadata) {
        const std::size_t equals = item.find('=');
        if (equals == std::string::npos || equals == 0) {
            throw StatusError(Status::BadArgument, fmt::format("\"{}\" is not KEY=VALUE", item));
        }
        metadata[item.substr(0, equals)] = item.substr(equals + 1);
    }
    return metadata;
}

}  // namespace

std::vector<WantedChunk> chunksOf(const ChunkArguments& arguments) {
    if (!arguments.frames.empty() && arguments.frames.size() != arguments.paths.size()) {
        throw StatusError(Status::BadArgument, fmt::format("{} frame counts for {} movies",
                                                           arguments.frames.size(), arguments.paths.size()));
    }
    std::vector<WantedChunk> chunks;
    for (std::size_t i = 0; i < arguments.paths.size(); ++i) {
        chunks.push_back({arguments.paths[i], std::nullopt});
        if (!arguments.frames.empty()) {
            chunks.back().frames = arguments.frames[i];
        }
    }
    return chunks;
}

void joinCommand(const JoinArguments& arguments) {
    JoinRequest request;
    request.chunks = chunksOf(arguments.chunks);
    request.output = arguments.output;
    request.existing = arguments.overwrite ? ExistingFile::Replace : ExistingFile::Refuse;
    if (!arguments.sound.empty()) {
        request.sound = {arguments.sound, soundOffsetOf(arguments)};
    }
    request.timecode = timecodeOf(arguments);
    request.metadata = metadataOf(arguments);
    request.indexFirst = arguments.indexFirst;
    const JoinedMovie movie = joinMovies(request);
    fmt::print("{}: joined {} movie{}, {} frame{} at {} frames/s\n", arguments.output, request.chunks.size(),
               request.chunks.size() == 1 ? "" : "s", movie.frames, movie.frames == 1 ? "" : "s",
               rateText(movie.framesPerSecond));
}

}  // namespace Morvane::Worker
