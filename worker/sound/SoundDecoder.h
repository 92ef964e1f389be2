#pragma once

#include "worker/sound/SoundFormat.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Morvane::Worker {

/// Decodes a sound file, or the sound of a movie, from its beginning, with libav in the calling process.
/// SoundFile does it at a safer distance.
class SoundDecoder {
public:
    /// Throws StatusError: NotFound, NoPermission; BadArgument for a file that is none of sound.
    explicit SoundDecoder(const std::string& path);
    ~SoundDecoder();
    SoundDecoder(const SoundDecoder&) = delete;
    SoundDecoder& operator=(const SoundDecoder&) = delete;

    /// The form in which a movie holds it without loss: the file's channels, layout and rate; integers of 16,
    /// 24 or 32 bits (8-bit ones are widened), floats of 32 or 64.
    const SoundFormat& format() const;

    /// Sample frames by which the sound begins later than the file as a whole; 0 but for some movies.
    std::int64_t startDelay() const;

    /// Replaces `block` by the next sample frames in that form, at least one; false at the end. Throws
    /// BadArgument for a damaged file, with the place.
    bool read(std::vector<std::uint8_t>& block);

private:
    class Decoding;
    std::unique_ptr<Decoding> decoding;
};

}  // namespace Morvane::Worker
