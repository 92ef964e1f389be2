#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "worker/LibavPointers.h"
#include "worker/read/FileSource.h"
#include "worker/read/SourceTimecode.h"

namespace Morvane::Worker {

/// A movie file opened for reading packets: libav's demuxer on one file, with the picture track chosen. Only
/// this file is ever opened, whatever it refers to. One thread at a time.
class MovieInput {
public:
    /// Finds out what the file's tracks are. Throws StatusError: CodecFailed for nothing that libav can read,
    /// or without pictures; InputOutput.
    explicit MovieInput(const SharedSource& source);

    /// The same file opened once more, for reading packets on another thread: what the tracks of a QuickTime
    /// or MPEG-4 file are, for which pictures may have to be decoded, is not found out again. This object
    /// must not be read from meanwhile. Throws as the constructor.
    std::unique_ptr<MovieInput> openAgain() const;

    const SharedSource& source() const { return source_; }

    AVFormatContext& format() { return *context; }
    const AVFormatContext& format() const { return *context; }
    /// The track whose pictures are read.
    AVStream& video() { return *context->streams[videoIndex]; }
    const AVStream& video() const { return *context->streams[videoIndex]; }

    /// What the time-code track says; nothing where there is none.
    const std::optional<SourceTimecode>& timecode() const { return timecode_; }

    /// Whether the file is of the QuickTime and MPEG-4 family, whose samples are whole frames with exact
    /// times.
    bool isQuickTime() const;

    /// From now on only packets of the picture track come, and without their data where that spares reading
    /// it.
    void listOnly();

    /// Goes to the first packet. False where the format cannot; reading goes on from anywhere then.
    bool rewind();

    /// Goes to a packet at or before `time` (of the picture track's time base), if the format can.
    bool seek(std::int64_t time);

    /// Reads the next packet of the picture track; false at the end of the file, or where it cannot be read
    /// any further.
    bool readPacket(AVPacket& packet);

private:
    MovieInput(const SharedSource& source, const MovieInput* known);
    bool takeTracks(const MovieInput& known);
    void findTracks();
    void keepPalette();
    void correctTimecode();

    const SharedSource source_;
    FileSource file;
    InputPointer context;
    int videoIndex = -1;
    std::optional<SourceTimecode> timecode_;
    std::vector<std::uint8_t> palette;  ///< as a packet carries it; empty: none
};

}  // namespace Morvane::Worker
