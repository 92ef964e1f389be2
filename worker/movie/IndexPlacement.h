#pragma once

#include "worker/movie/MovieIndex.h"
#include "worker/movie/OutputFile.h"

#include <cstdint>

namespace Morvane::Worker {

/// A movie in fragments on its way to an ordinary one.
struct UnplacedMovie {
    MovieIndex index;                ///< complete; chunks where they lie in the file now
    std::int64_t reserveOffset = 0;  ///< of the `free` atom that waits for the index
    std::int64_t reserveBytes = 0;   ///< of that atom as a whole; 0: there is none
    std::int64_t end = 0;            ///< bytes of the file that count; what lies behind is cut off
};

/// Where there are so many bytes of media, copying them costs more than the gap that is left in a movie
/// otherwise: 2 MiB, a twenty-seventh of it at most.
constexpr std::int64_t usualFewestInPlace = std::int64_t{54} << 20;

/// Turns the fragmented movie in `file` into an ordinary one, with its index before the media or after it,
/// brings it to the disk, reads the index back and compares it. At every moment the file at the path is a
/// movie, the fragmented or the ordinary one: the change is one rename, or one write of 8 bytes. Where a copy
/// is wanted and there is no room for it the media stay in place, and where there is no room for the index it
/// goes where there is. Media of fewer than `fewestInPlace` bytes are copied, with sound and pictures in
/// turn. `file` afterwards is the file at the path. Throws StatusError.
void placeIndex(OutputFile& file, const UnplacedMovie& movie, bool indexFirst, std::int64_t fewestInPlace);

}  // namespace Morvane::Worker
