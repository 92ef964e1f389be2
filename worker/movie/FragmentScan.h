#pragma once

#include "worker/movie/OutputFile.h"
#include "worker/movie/SampleTable.h"

#include <cstdint>
#include <vector>

namespace Morvane::Worker {

/// What a movie in fragments holds, as its file says: the state of every movie that is being written, and
/// what a crash leaves.
struct FragmentedMovie {
    struct Sample {
        SampleTable::Sample stored;
        std::int64_t shown = 0;  ///< ticks from the first sample's decoding to this one's display
        bool beginsFragment = false;
    };

    std::int64_t reserveOffset = 0;  ///< of the `free` atom that waits for the index
    std::int64_t reserveBytes = 0;   ///< of that atom as a whole; 0: there is none
    Bytes header;                    ///< the `moov` atom as a whole; empty: none was found
    bool fragmented = false;         ///< the header says that fragments follow; false: an ordinary movie
    std::vector<Sample> pictures;    ///< of the first track, in decoding order
    std::int64_t end = 0;            ///< bytes of the file up to the last whole atom or picture
};

/// Reads the whole file's atoms but for the media. Stops quietly at the first one that is torn; pictures
/// whose bytes are not all there are left out. Throws StatusError (InputOutput) for an index that contradicts
/// itself.
FragmentedMovie scanFragments(const OutputFile& file);

/// Drops pictures from the end until the rest can be shown one after the other: what a crash kept of a codec
/// that stores pictures out of order may lack those in between. Gives the number dropped.
std::size_t dropIncompleteTail(std::vector<FragmentedMovie::Sample>& pictures, std::uint32_t ticksPerFrame);

}  // namespace Morvane::Worker
