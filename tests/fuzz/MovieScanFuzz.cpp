// Any file is a movie whose pictures can be listed, or is refused; what is listed lies inside the file. Any
// file can be recovered, and is a movie that can be listed then, or is refused. In the corpus, MOVIES, is a
// movie that others are compared with.

#include <cstdlib>
#include <filesystem>
#include <string>

#include "worker/Status.h"
#include "worker/movie/FragmentScan.h"
#include "worker/movie/MovieIndex.h"
#include "worker/movie/Recovery.h"
#include "worker/movie/StoredMovie.h"
#include "worker/movie/TimecodeMedia.h"

using namespace Morvane::Worker;

namespace {

/// Nothing that an input says is the name of a file, so this target needs no more than a place for its movie.
class Folder {
public:
    Folder() { std::filesystem::create_directories(path); }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path path = std::filesystem::temp_directory_path() / "corvel-fuzz";
};

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
    static const StoredMovie other = readStoredMovie(OutputFile::openToRead(MOVIES "/finished-h264"));
    const StoredMovie movie = readStoredMovie(file);
    for (const SampleTable::Sample& picture : movie.samples) {
        checkPlace(picture, file.size());
    }
    differencesBetween(movie, other);
}

/// The file is changed by this, or replaced by another one of its name.
void recover(const std::string& path) {
    const RecoveredMovie recovered = recoverMovie(path);
    if (recovered.wasWhole) {
        return;
    }
    const StoredMovie movie = readStoredMovie(OutputFile::openToRead(path));
    if (static_cast<std::int64_t>(movie.samples.size()) != recovered.frames) {
        std::abort();
    }
}

template <typename Read>
void tryTo(Read read) {
    try {
        read();
    } catch (const StatusError&) {
        // Refused in words.
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    const std::string path = folder.path / "movie";
    OutputFile file = OutputFile::create(path, ExistingFile::Replace);
    file.write(0, {data, size});
    tryTo([&] { listFragments(file); });
    tryTo([&] { listPictures(file); });
    tryTo([&] { recover(path); });
    return 0;
}
