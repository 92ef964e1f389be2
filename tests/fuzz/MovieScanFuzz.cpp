// Any file is a movie whose pictures can be listed, or is refused; what is listed lies inside the file.

#include "worker/Status.h"
#include "worker/movie/FragmentScan.h"
#include "worker/movie/MovieIndex.h"
#include "worker/movie/StoredMovie.h"
#include "worker/movie/TimecodeMedia.h"

#include <sys/mman.h>

#include <cstdlib>
#include <string>

using namespace Morvane::Worker;

namespace {

void checkPlace(const SampleTable::Sample& picture, std::int64_t end) {
    if (picture.offset < 0 || picture.offset + picture.bytes > end) {
        std::abort();
    }
}

void listFragments(const OutputFile& file) {
    FragmentedMovie movie = scanFragments(file);
    if (movie.end > file.size() || movie.reserveOffset + movie.reserveBytes > movie.end) {
        std::abort();
    }
    for (const FragmentedMovie::Sample& picture : movie.pictures) {
        checkPlace(picture.stored, movie.end);
    }
    if (!movie.pictures.empty()) {
        dropIncompleteTail(movie.pictures, movie.pictures.front().stored.duration);
    }
    if (!movie.header.empty()) {
        readVideoTrack(movie.header);
        readTimecode(movie.header, file);
    }
}

void listPictures(const OutputFile& file) {
    const StoredMovie movie = readStoredMovie(file);
    for (const SampleTable::Sample& picture : movie.samples) {
        checkPlace(picture, file.size());
    }
    differencesBetween(movie, movie);
}

template <typename Read>
void tryTo(Read read, const OutputFile& file) {
    try {
        read(file);
    } catch (const StatusError&) {
        // Refused in words.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int memory = memfd_create("movie", MFD_CLOEXEC);
    OutputFile file = OutputFile::open("/proc/self/fd/" + std::to_string(memory));
    file.truncate(0);
    file.write(0, {data, size});
    tryTo(listFragments, file);
    tryTo(listPictures, file);
    return 0;
}
