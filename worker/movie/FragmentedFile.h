#pragma once

#include "worker/movie/FragmentMuxer.h"
#include "worker/movie/MovieTracks.h"
#include "worker/movie/OutputFile.h"

#include <cstdint>
#include <optional>

namespace Morvane::Worker {

/// The state of a movie while it is being written: `ftyp`, a `free` atom that waits for the index, the time
/// code's media, a `moov` atom that says that fragments follow, and then fragments and media of other tracks
/// as they come. Whatever is whole can be read by any program; a fragment counts from one byte on that is
/// written last, so that none is ever there by half. Not for several threads at once.
class FragmentedFile {
public:
    /// Creates the file. Throws StatusError (see MovieFile).
    FragmentedFile(const std::string& path, const VideoTrack& video, ExistingFile existing);

    /// What the header will say: the header is written with the first packet.
    std::optional<TimecodeTrack> timecode;
    Metadata metadata;

    /// Takes one packet, times in frames; it reaches the file with the next flush, which comes by itself when
    /// much is waiting.
    void add(const AVPacket& packet);
    /// Writes a fragment of what was added. After a failure the file is as it was before, and the packets are
    /// lost.
    void flush();
    /// Puts media of other tracks into the file, at once, as an atom of their own; gives their offset.
    std::int64_t append(ByteView media);
    /// Drops everything behind `end`, which must have been the end before. For media that came to nothing.
    void shorten(std::int64_t end);

    bool begun() const { return headerWritten; }           ///< the file has a header
    std::int64_t packets() const { return packetCount; }   ///< taken so far
    std::int64_t waitingBytes() const { return waiting; }  ///< of packets that are not in the file
    std::int64_t end() const { return endOffset; }         ///< bytes of the file
    TimeScale timeScale() const { return scale; }
    OutputFile& file() { return output; }

private:
    void take(ByteView bytes);
    void takeFragment(ByteView bytes);
    ByteView collectHeader(ByteView bytes);
    void writeHeader(const AVPacket& first);
    void advance(std::int64_t bytes);

    TimeScale scale;
    FragmentMuxer muxer;  // before the file: a codec that it refuses leaves no file behind
    OutputFile output;
    std::int64_t endOffset = 0;
    std::int64_t packetCount = 0;
    std::int64_t waiting = 0;
    int waitingPackets = 0;
    bool headerWritten = false;
    Bytes librarysHeader;
    Bytes fragmentHeader;            ///< the `moof` atom that is coming in
    std::int64_t fragmentMedia = 0;  ///< bytes written behind it
};

}  // namespace Morvane::Worker
