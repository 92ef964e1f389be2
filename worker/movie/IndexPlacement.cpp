#include "worker/movie/IndexPlacement.h"

#include "worker/Status.h"
#include "worker/movie/CompactCopy.h"
#include "worker/movie/IndexCheck.h"
#include "worker/movie/MovieLayout.h"

#include <vector>

namespace Morvane::Worker {

namespace {

enum class Place { Copy, Reserve, End };

std::int64_t mediaBytes(const MovieIndex& index) {
    std::int64_t bytes = 0;
    for (const IndexTrack& track : index.tracks) {
        for (const SampleTable::Chunk& chunk : track.samples.chunks()) {
            bytes += chunk.bytes;
        }
    }
    return bytes;
}

/// The index in the reserve, behind it a `free` atom for what is left, and the header of an `mdat` atom
/// around everything that follows: fragments, their headers, sound.
void placeInReserve(OutputFile& file, const UnplacedMovie& movie, const Bytes& moov) {
    const auto indexBytes = static_cast<std::int64_t>(moov.size());
    const std::int64_t mediaStart = movie.reserveOffset + movie.reserveBytes - longHeaderBytes;
    const std::int64_t left = movie.reserveBytes - longHeaderBytes - indexBytes;
    file.write(movie.reserveOffset + shortHeaderBytes, ByteView(moov).subspan(shortHeaderBytes));
    if (left > 0) {
        file.write(movie.reserveOffset + indexBytes, shortHeader(left, atomType("free")));
    }
    file.write(mediaStart, longHeader(movie.end - mediaStart, atomType("mdat")));
    // All of it is still inside the `free` atom. Only when it is on the disk does that atom become the index.
    file.sync();
    file.write(movie.reserveOffset, ByteView(moov).first(shortHeaderBytes));
    file.sync();
    checkIndex(file.path(), movie.index, moov, movie.reserveOffset);
}

/// The index behind the media; the reserve becomes the beginning of one `mdat` atom around everything.
void placeAtEnd(OutputFile& file, const UnplacedMovie& movie, const Bytes& moov) {
    const Bytes header = longHeader(movie.end - movie.reserveOffset, atomType("mdat"));
    file.write(movie.end, moov);
    file.write(movie.reserveOffset + shortHeaderBytes, ByteView(header).subspan(shortHeaderBytes));
    file.sync();
    file.write(movie.reserveOffset, ByteView(header).first(shortHeaderBytes));
    file.sync();
    checkIndex(file.path(), movie.index, moov, movie.end);
}

std::vector<Place> placesToTry(const UnplacedMovie& movie, std::int64_t indexBytes, bool indexFirst,
                               std::int64_t fewestInPlace) {
    const std::int64_t left = movie.reserveBytes - longHeaderBytes - indexBytes;
    const bool fits = left == 0 || left >= shortHeaderBytes;
    const bool hasReserve = movie.reserveBytes >= longHeaderBytes;
    std::vector<Place> places;
    if (!hasReserve || mediaBytes(movie.index) < fewestInPlace || (indexFirst && !fits)) {
        places.push_back(Place::Copy);
    }
    if (fits && indexFirst) {
        places.push_back(Place::Reserve);
    }
    if (hasReserve) {
        places.push_back(Place::End);
    }
    if (fits && !indexFirst) {
        places.push_back(Place::Reserve);
    }
    return places;
}

/// Whether another place may still do.
bool lacksRoom(Status status) {
    return status == Status::DiskFull || status == Status::NoPermission || status == Status::BadArgument;
}

}  // namespace

void placeIndex(OutputFile& file, const UnplacedMovie& movie, bool indexFirst, std::int64_t fewestInPlace) {
    const Bytes moov = writeMovieAtom(movie.index);
    const std::vector<Place> places =
        placesToTry(movie, static_cast<std::int64_t>(moov.size()), indexFirst, fewestInPlace);
    file.truncate(movie.end);
    for (std::size_t i = 0; i < places.size(); ++i) {
        try {
            switch (places[i]) {
                case Place::Copy:
                    file = copyCompact(file, movie.index, indexFirst);
                    break;
                case Place::Reserve:
                    placeInReserve(file, movie, moov);
                    break;
                case Place::End:
                    placeAtEnd(file, movie, moov);
                    break;
            }
            break;
        } catch (const StatusError& error) {
            if (i + 1 == places.size() || !lacksRoom(error.status)) {
                throw;
            }
            file.truncate(movie.end);
        }
    }
    // Not among what is tried: the movie is whole, and must not be taken apart again.
    syncFolderOf(file.path());
}

}  // namespace Morvane::Worker
