#pragma once

#include "worker/movie/ChunkCheck.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Morvane::Worker {

/// `corvel-movie recover FILE`: makes an unfinished movie whole in its place and says on standard output what
/// it kept. Throws StatusError.
void recoverCommand(const std::string& path);

/// `corvel-movie sound FILE`: says on standard output which sound of that file `addAudioFile` would take.
/// Throws StatusError where there is none.
void soundCommand(const std::string& path);

/// Chunks on the command line.
struct ChunkArguments {
    std::vector<std::string> paths;
    std::vector<std::int64_t> frames;  ///< of each chunk; empty: unchecked
};

/// Throws StatusError (BadArgument) where counts and paths are not as many.
std::vector<WantedChunk> chunksOf(const ChunkArguments& arguments);

/// `corvel-movie check`: says on standard output what is wrong with which chunk, a line for each complaint:
/// the chunk's place in the list, counted from 0, a tab, the complaint. Whether all is well. Throws
/// StatusError.
bool checkCommand(const ChunkArguments& arguments);

/// What stands on the command line of `corvel-movie join`.
struct JoinArguments {
    ChunkArguments chunks;
    std::string output;
    bool overwrite = false;
    std::string sound;  ///< empty: none
    float soundOffset = 0;
    bool offsetInFrames = false;  ///< else in seconds
    std::string timecode;         ///< empty: the first chunk's
    std::string reel;
    std::vector<std::string> metadata;  ///< KEY=VALUE each
    bool indexFirst = true;
};

/// `corvel-movie join`: says on standard output what it made. Throws StatusError.
void joinCommand(const JoinArguments& arguments);

}  // namespace Morvane::Worker
