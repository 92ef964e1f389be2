#pragma once

#include "worker/movie/ChunkCheck.h"
#include "worker/movie/MovieTracks.h"
#include "worker/movie/OutputFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Morvane::Worker {

struct JoinRequest {
    struct Sound {
        std::string path;
        double offsetSeconds = 0;
    };

    std::vector<WantedChunk> chunks;  ///< in the order in which they are played
    std::string output;
    ExistingFile existing = ExistingFile::Refuse;
    std::optional<Sound> sound;
    std::optional<TimecodeTrack> timecode;  ///< nothing: the first chunk's, if it has one
    Metadata metadata;                      ///< added to the first chunk's; an empty value removes a key
    bool indexFirst = true;
};

struct JoinedMovie {
    std::int64_t frames = 0;
    double framesPerSecond = 0;
};

/// Joins movies of one form into one, picture for picture and byte for byte, without encoding. Before
/// anything is written every chunk is looked at as checkChunks does. Times are counted in frames at the rate
/// that all chunks state, never taken from the chunks' clocks. `output` appears, or is replaced, when the
/// movie is whole and on the disk; on failure it is left alone. Sound in the chunks is dropped. Blocks for as
/// long as the disk does. Throws StatusError; BadArgument's words may have several lines, one a complaint.
JoinedMovie joinMovies(const JoinRequest& request);

}  // namespace Morvane::Worker
