#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/farm/FarmState.h"

namespace Corvel {

/// How far one chunk is, as the process that renders it last said. Each chunk has a file of its own, so that
/// machines never write to the same one.
struct Tally {
    enum class State { Waiting, Running, Done, Failed };

    State state = State::Waiting;
    std::string node;
    int attempt = 0;  ///< counted from 1
    int done = 0;     ///< frames
    std::uint64_t bytes = 0;
    double seconds = 0;
    std::string error;  ///< of a failure
};

/// What stands in the chunk's file; a chunk without one waits. Done is only what is there as a file.
Tally readTally(const FarmPlace& place, const FarmState& state, int chunk);
std::vector<Tally> readTallies(const FarmPlace& place, const FarmState& state);
/// Never throws: a render does not end because nobody can be told of it. On a full disk the old file is
/// overwritten in its place.
void writeTally(const FarmPlace& place, int chunk, const Tally& tally) noexcept;

/// "chunk 3 (frames 121-180) failed on n2: reason", a line for each chunk that failed.
std::vector<std::string> failureTexts(const FarmState& state, const std::vector<Tally>& tallies);

}  // namespace Corvel
