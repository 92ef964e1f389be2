#pragma once

#include "worker/movie/MovieIndex.h"
#include "worker/sound/SampleFormat.h"
#include "worker/sound/SoundFormat.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>

namespace Morvane::Worker {

/// Puts media into the movie file and gives the offset at which they lie there.
using AppendMedia = std::function<std::int64_t(ByteView)>;

/// A sound track without samples. The sample description is libav's: version 1, or 2 ("lpcm") above 48 kHz,
/// with the channel layout.
IndexTrack soundIndexTrack(const SoundFormat& format);

/// A sound track that is written from its beginning to its end. Silence is written out: an edit list would
/// round a delay to the movie's ticks, and readers disagree about it.
class SoundTrackWriter {
public:
    SoundTrackWriter(const SoundFormat& format, AppendMedia append);

    /// `sound`: whole sample frames in the track's form.
    void add(ByteView sound);
    void addSilence(std::int64_t frames);
    /// Writes the rest and gives the track. Nothing may be added after that.
    IndexTrack finish();

private:
    void flush();

    SoundFormat format;
    AppendMedia append;
    IndexTrack track;
    Bytes pending;
};

/// Everything that the sound file at `audioPath` holds, as MovieFile::addAudioFile says. The file is opened
/// before anything is appended.
IndexTrack writeSoundFile(const std::string& audioPath, double offsetSeconds, const AppendMedia& append);

/// A sound track whose blocks come from a host in any order, each with its position.
class PositionedSound {
public:
    /// REQUIRES: checkSampleFormat passed.
    PositionedSound(const SampleFormat& format, AppendMedia append);

    /// Throws StatusError (BadArgument) for a block that overlaps another or lies outside 0 to 24 hours.
    void add(std::int64_t position, std::int64_t count, const std::byte* samples);
    bool empty() const { return blocks.empty(); }
    /// Fills the gaps with silence and gives the track.
    IndexTrack finish();

private:
    struct Block {
        std::int64_t count;   ///< sample frames
        std::int64_t offset;  ///< bytes from the beginning of the file
    };

    void checkRoom(std::int64_t position, std::int64_t count) const;
    void index(IndexTrack& track, std::int64_t offset, std::int64_t count) const;

    SampleFormat format;
    AppendMedia append;
    std::map<std::int64_t, Block> blocks;  ///< by position
};

/// No sound lies later than this after a movie's start.
inline constexpr std::int64_t latestSoundSeconds = 24 * 60 * 60;

}  // namespace Morvane::Worker
