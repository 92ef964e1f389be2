#pragma once

#include "worker/movie/AtomWriter.h"
#include "worker/movie/SampleTable.h"
#include "worker/movie/TimeScale.h"

#include <cstdint>
#include <vector>

namespace Morvane::Worker {

enum class TrackKind { Video, Sound, Timecode };

/// One track of the index. Its id is its place in the index, counted from 1.
struct IndexTrack {
    TrackKind kind = TrackKind::Video;
    Bytes description;            ///< the `stsd` atom as a whole
    std::uint32_t timeScale = 0;  ///< ticks a second
    SampleTable samples;
    std::uint32_t width = 0;      ///< pixels as shown, 16.16 fixed point; 0 but for pictures
    std::uint32_t height = 0;     ///< the same
    std::int64_t firstShown = 0;  ///< ticks from the first decoding to the first display
};

/// A movie's index: everything that its `moov` atom says.
struct MovieIndex {
    std::uint32_t timeScale = 0;  ///< of the movie; that of its pictures, so that no duration is rounded
    std::uint64_t created = 0;    ///< seconds since 1904-01-01 00:00 UTC
    std::vector<IndexTrack> tracks;
    Bytes metadata;  ///< `udta` and `meta` atoms, as they are
    Bytes
        fragments;  ///< the `mvex` atom of a movie whose pictures follow in fragments; empty: an ordinary one
};

/// The `moov` atom. The pictures' track refers to the time-code track, if there is one. Numbers that outgrow
/// 32 bits take the atoms' 64-bit versions.
Bytes writeMovieAtom(const MovieIndex& index);

/// The pictures' track of a `moov` atom as writeMovieAtom or libav's muxer wrote it, without samples. Throws
/// StatusError (InputOutput) when there is none.
IndexTrack readVideoTrack(ByteView moov);

/// Seconds since 1904 now.
std::uint64_t movieTimeNow();

}  // namespace Morvane::Worker
