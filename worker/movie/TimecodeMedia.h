#pragma once

#include "worker/movie/MovieIndex.h"
#include "worker/movie/MovieTracks.h"
#include "worker/movie/OutputFile.h"

#include <optional>

namespace Morvane::Worker {

/// Throws StatusError (BadArgument) for a time code that a movie cannot hold.
void checkTimecode(const TimecodeTrack& timecode);

/// The media of a time-code track: the numbers of the frames at which its samples begin. One sample, but for
/// movies whose length in ticks does not fit a sample's 32 bits.
Bytes timecodeMedia(const TimecodeTrack& timecode, std::int64_t frames, TimeScale scale);

/// The track over `frames` frames whose media begin at `offset`.
IndexTrack timecodeIndexTrack(const TimecodeTrack& timecode, std::int64_t frames, TimeScale scale,
                              std::int64_t offset);

/// The time code of a movie in fragments, as its `moov` atom and its first sample say; nothing when it has no
/// such track.
std::optional<TimecodeTrack> readTimecode(ByteView moov, const OutputFile& file);

}  // namespace Morvane::Worker
