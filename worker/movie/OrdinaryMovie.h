#pragma once

#include "worker/movie/FragmentScan.h"
#include "worker/movie/IndexPlacement.h"
#include "worker/movie/MovieIndex.h"
#include "worker/movie/MovieTracks.h"
#include "worker/movie/OutputFile.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Morvane::Worker {

/// What an ordinary movie has beside its pictures.
struct MovieParts {
    std::optional<TimecodeTrack> timecode;
    std::vector<IndexTrack> sounds;  ///< their media are in the file
    Bytes metadata;                  ///< `udta` and `meta` atoms
};

/// Turns the movie in fragments that `file` holds, and that was read from it as `found`, into an ordinary
/// one. See placeIndex for what happens to the file. REQUIRES: at least one picture.
void makeOrdinary(OutputFile& file, const FragmentedMovie& found, const MovieParts& parts, bool indexFirst,
                  std::int64_t fewestInPlace);

}  // namespace Morvane::Worker
