#pragma once

#include "worker/movie/MovieIndex.h"
#include "worker/movie/MovieTracks.h"
#include "worker/movie/OutputFile.h"
#include "worker/movie/SampleTable.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Morvane::Worker {

/// The pictures of an ordinary movie, as its index says.
struct StoredMovie {
    IndexTrack pictures;  ///< without samples
    std::vector<SampleTable::Sample> samples;
    std::uint32_t ticksPerFrame = 0;  ///< of every frame alike
    std::optional<TimecodeTrack> timecode;
    Metadata metadata;
};

/// Reads the index of the movie in `file`. Throws StatusError, each time with the file's path: BadArgument
/// for a file that is no ordinary movie with pictures first, InputOutput for an index that contradicts itself
/// or points outside the file, and for frames that do not all last the same time.
StoredMovie readStoredMovie(const OutputFile& file);

/// What differs between the sample descriptions and clocks of two movies, each difference in words that name
/// both values, the one of `first` first; empty when pictures of both can stand in one track.
std::vector<std::string> differencesBetween(const StoredMovie& first, const StoredMovie& other);

}  // namespace Morvane::Worker
