#include "worker/movie/OrdinaryMovie.h"

#include "worker/movie/MovieLayout.h"
#include "worker/movie/TimecodeMedia.h"

#include <algorithm>

namespace Morvane::Worker {

namespace {

IndexTrack pictureTrack(const FragmentedMovie& found) {
    IndexTrack track = readVideoTrack(found.header);
    track.firstShown = found.pictures.front().shown;
    for (const FragmentedMovie::Sample& sample : found.pictures) {
        if (sample.beginsFragment) {
            track.samples.endChunk();
        }
        track.samples.add(sample.stored);
        track.firstShown = std::min(track.firstShown, sample.shown);
    }
    return track;
}

}  // namespace

void makeOrdinary(OutputFile& file, const FragmentedMovie& found, const MovieParts& parts, bool indexFirst,
                  std::int64_t fewestInPlace) {
    UnplacedMovie movie{{}, found.reserveOffset, found.reserveBytes, found.end};
    movie.index.tracks.push_back(pictureTrack(found));
    const TimeScale scale = {movie.index.tracks.front().timeScale, found.pictures.front().stored.duration};
    movie.index.timeScale = scale.ticksPerSecond;
    movie.index.created = movieTimeNow();
    movie.index.metadata = parts.metadata;
    movie.index.tracks.insert(movie.index.tracks.end(), parts.sounds.begin(), parts.sounds.end());
    if (parts.timecode) {
        const auto frames = static_cast<std::int64_t>(found.pictures.size());
        const Bytes media = timecodeMedia(*parts.timecode, frames, scale);
        AtomWriter atom;
        atom.atom(atomType("mdat"), [&] { atom.append(media); });
        file.write(movie.end, atom.bytes());
        movie.index.tracks.push_back(
            timecodeIndexTrack(*parts.timecode, frames, scale, movie.end + shortHeaderBytes));
        movie.end += static_cast<std::int64_t>(atom.bytes().size());
    }
    placeIndex(file, movie, indexFirst, fewestInPlace);
}

}  // namespace Morvane::Worker
