#pragma once

#include "worker/sound/SoundFormat.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Morvane::Worker {

/// A sound file, or the sound of a movie, being decoded from its beginning. Any file that libav can decode.
class SoundFile {
public:
    /// Throws StatusError: NotFound, NoPermission; BadArgument for a file that is none of sound.
    explicit SoundFile(const std::string& path);
    ~SoundFile();
    SoundFile(const SoundFile&) = delete;
    SoundFile& operator=(const SoundFile&) = delete;

    /// The form in which a movie holds it without loss: the file's channels, layout and rate; integers of 16,
    /// 24 or 32 bits (8-bit ones are widened), floats of 32 or 64.
    const SoundFormat& format() const;

    /// Sample frames by which the sound begins later than the file as a whole; 0 but for some movies.
    std::int64_t startDelay() const;

    /// Replaces `block` by the next sample frames in that form, at least one; false at the end. Throws
    /// BadArgument for a damaged file, with the place.
    bool read(std::vector<std::uint8_t>& block);

private:
    class Decoder;
    std::unique_ptr<Decoder> decoder;
};

}  // namespace Morvane::Worker
