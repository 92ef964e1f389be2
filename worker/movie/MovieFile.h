#pragma once

#include "worker/movie/IndexPlacement.h"
#include "worker/movie/MovieTracks.h"
#include "worker/movie/OutputFile.h"
#include "worker/sound/SampleFormat.h"

extern "C" {
#include <libavcodec/packet.h>
}

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Morvane::Worker {

/// A QuickTime movie that is being written. At every moment the file on disk is a movie that other programs
/// can open: every packet reaches it within half a second, with its time code, whatever happens to this
/// process. `finish` turns it into an ordinary movie; docs/adr/ tells how.
///
/// Order of calls: construct, then packets, sound, samples, time code and metadata in any order, `finish`
/// once; after that only the destructor. A destructor without `finish` leaves the file readable up to the
/// last packet (a file without any packet is removed).
///
/// Threads: packets may come from one thread while another calls the rest; `finish` and the destructor alone.
/// Every call may block for as long as the disk does.
///
/// Failures throw StatusError, whose words name the file and what the system said. Each is thrown once: when
/// a packet cannot be written, by that packet or, where it was written in the background, by the next one; by
/// `finish` where no packet came after it. Later packets are refused (BadArgument), and `finish` makes an
/// ordinary movie of what is on the file and throws only what nobody was told before.
class MovieFile {
public:
    struct Options {
        VideoTrack video;
        /// In the file from the beginning; `setTimecode` replaces it.
        std::optional<TimecodeTrack> provisionalTimecode;
        Metadata metadata;
        ExistingFile existing = ExistingFile::Replace;
        /// Media of fewer bytes are copied once when the movie is finished, so that no gap is left in it
        /// where the index was waited for; larger ones stay where they are.
        std::int64_t fewestBytesInPlace = usualFewestInPlace;
        /// A packet waits at most so long before it is written; what is left of half a second is for writing
        /// it. 0: each is written at once.
        std::chrono::milliseconds longestWait{400};
    };

    /// Creates the file. Throws Exists (only with Refuse), NotFound (no such folder), NoPermission, DiskFull,
    /// BadArgument (not a regular file; a rate or a time code that cannot be), NotSupportedByCodec (a type
    /// that QuickTime movies cannot hold).
    MovieFile(const std::string& path, const Options& options);
    ~MovieFile();
    MovieFile(const MovieFile&) = delete;
    MovieFile& operator=(const MovieFile&) = delete;

    /// Takes the next packet in decoding order. Times are in frames: `duration` 1, `pts` counts displayed
    /// frames from 0, `dts` rises from packet to packet and may begin below 0. The packet's data is
    /// referenced or copied; the caller's packet stays as it is.
    void addVideoPacket(const AVPacket& packet);

    /// Adds one sound track with everything the file's best audio stream holds, uncompressed, at its own
    /// rate, channels and layout, exact to the sample. `offsetSeconds` above 0 puts silence before it, below
    /// 0 drops its beginning; it is rounded to the nearest sample. BadArgument: no sound in that file,
    /// nothing left of it, an offset or a beginning beyond 24 hours. Nothing is added then.
    void addAudioFile(const std::string& audioPath, double offsetSeconds);

    /// The form of what `addSamples` brings; begins a sound track of its own. REQUIRES: no samples are open.
    void setSampleFormat(const SampleFormat& format);
    /// `count` sample frames of 4 bytes, in this machine's byte order, that begin `position` sample frames
    /// after the movie's start. In any order; gaps become silence. BadArgument: before `setSampleFormat`, an
    /// overlap with earlier samples, a position below 0 or beyond 24 hours.
    void addSamples(std::int64_t position, std::int64_t count, const std::byte* samples);
    /// Ends the track begun by `setSampleFormat`. Without any samples there is none.
    void finishSamples();

    /// One time-code track over the whole movie; the last call counts, and nothing means no track, also not
    /// the provisional one. BadArgument: out of range.
    void setTimecode(const std::optional<TimecodeTrack>& timecode);

    /// Adds to what was given at the beginning; an empty value removes the key.
    void addMetadata(const Metadata& metadata);

    /// Bytes on the file so far.
    std::int64_t size() const;

    /// Makes the file an ordinary movie, with its index before the media or after it, brings it to the disk,
    /// reads the index back and compares it. Then, and only then, it returns. Throws BadArgument when no
    /// packet came, NotFound when the file was removed or replaced under its name, DiskFull, InputOutput.
    /// After a failure the file is readable up to the last packet that is on it.
    void finish(bool indexFirst);

private:
    class Writer;
    std::unique_ptr<Writer> writer;
};

}  // namespace Morvane::Worker
